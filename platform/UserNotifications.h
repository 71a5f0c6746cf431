#pragma once

#include <functional>
#include <optional>
#include <string>

namespace hushbox {

/// What a program may ask permission for; the bits of macOS's UNAuthorizationOptions.
enum NotificationOption : unsigned { notificationSound = 2, notificationAlert = 4 };

/// A notification to show at once.
struct NotificationRequest {
  /// Must be unique: on macOS a request replaces an earlier one with the same identifier.
  std::string identifier;
  std::string title;
  std::string body;
  /// Whether to play the system's default notification sound.
  bool defaultSound = false;
};

/// The platform's notification service. Any thread; both operations return at once.
///
/// A completion is called at most once, on a thread that the service chooses, possibly during the
/// call itself. An error is passed as its description in the user's language.
class UserNotifications {
 public:
  virtual ~UserNotifications() = default;

  /// Requests permission for `options`, a union of NotificationOption. The system asks the user at
  /// most once and afterwards returns the current setting. On a platform without such permission
  /// it is granted if there is a notification service.
  virtual void requestAuthorization(
      unsigned options,
      std::function<void(bool granted, std::optional<std::string> error)> completion) = 0;

  /// Shows a notification. `completion` receives an error if the service refuses it or is absent;
  /// nothing is retried.
  virtual void add(NotificationRequest request,
                   std::function<void(std::optional<std::string> error)> completion) = 0;
};

}  // namespace hushbox
