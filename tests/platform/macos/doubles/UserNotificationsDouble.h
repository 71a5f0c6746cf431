#pragma once

#include <optional>
#include <string>
#include <vector>

namespace hushbox::doubles {

/// The notification service, which replies on its own threads. Main thread only; run the loop
/// before reading results.
struct Notification {
  std::string identifier;
  std::string title;
  std::string body;
  bool defaultSound = false;
  bool trigger = false;
};

/// Sets the reply to a request for permission; initially granted without an error.
void setAuthorization(bool granted, std::optional<std::string> error = std::nullopt);
/// The options of the last request for permission.
unsigned authorizationOptions();

/// From now on adding a notification fails with this description.
void setAddError(std::optional<std::string> error);

/// Returns the notifications that were added without an error, oldest first.
std::vector<Notification> notifications();
void clearNotifications();

void resetUserNotifications();

}  // namespace hushbox::doubles
