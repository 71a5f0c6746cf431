#pragma once

#include <functional>
#include <optional>
#include <string>

namespace hushbox {

/// What a program may ask permission for; the bits of the user-notification service.
enum NotificationOption : unsigned { notificationSound = 2, notificationAlert = 4 };

/// One notification, to be shown at once.
struct NotificationRequest {
  /// Two requests under one identifier are one notification.
  std::string identifier;
  std::string title;
  std::string body;
  /// Whether the system's default notification sound goes with it.
  bool defaultSound = false;
};

/// The platform's user-notification service. Any thread; both operations return at once.
///
/// Completions run on a thread of the service's choosing, which may be the caller's, at most once;
/// an error arrives as its localised description.
class UserNotifications {
 public:
  virtual ~UserNotifications() = default;

  /// Asks the user once for the listed options (a union of NotificationOption).
  virtual void requestAuthorization(
      unsigned options,
      std::function<void(bool granted, std::optional<std::string> error)> completion) = 0;

  virtual void add(NotificationRequest request,
                   std::function<void(std::optional<std::string> error)> completion) = 0;
};

}  // namespace hushbox
