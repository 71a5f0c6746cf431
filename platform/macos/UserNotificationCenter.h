#pragma once

#include "platform/UserNotifications.h"

namespace hushbox {

/// The user-notification service. Any thread; completions run on a thread that the service chooses.
///
/// The service identifies programs by their bundle. In a program without one, such as an executable
/// that was copied out of its bundle, it raises an exception. There the service is not called, and
/// each completion runs at once on the caller's thread with an error that gives the reason.
class UserNotificationCenter final : public UserNotifications {
 public:
  void requestAuthorization(
      unsigned options,
      std::function<void(bool granted, std::optional<std::string> error)> completion) override;
  void add(NotificationRequest request,
           std::function<void(std::optional<std::string> error)> completion) override;
};

}  // namespace hushbox
