#pragma once

#include <optional>
#include <string>
#include <vector>

namespace hushbox::doubles {

/// The notification service, which answers on threads of its own. Main thread only; run the loop
/// before looking.
struct Notification {
  std::string identifier;
  std::string title;
  std::string body;
  bool defaultSound = false;
  bool trigger = false;
};

/// What the user will answer, granted at first, with an error beside it.
void setAuthorization(bool granted, std::optional<std::string> error = std::nullopt);
/// The options of the last question.
unsigned authorizationOptions();

/// The description of the error that adding meets from now on.
void setAddError(std::optional<std::string> error);

/// What was added without an error, oldest first.
std::vector<Notification> notifications();
void clearNotifications();

void resetUserNotifications();

}  // namespace hushbox::doubles
