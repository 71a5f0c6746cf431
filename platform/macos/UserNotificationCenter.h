#pragma once

#include "platform/UserNotifications.h"

namespace hushbox {

/// The user-notification service. Any thread; completions run on a thread of the service's.
///
/// The service knows programs by their bundle and raises an exception in one that has none, as when
/// the executable is started by itself outside of it. There it is not asked at all, and each
/// completion is called at once, on the caller's thread, with an error that says so.
class UserNotificationCenter final : public UserNotifications {
 public:
  void requestAuthorization(
      unsigned options,
      std::function<void(bool granted, std::optional<std::string> error)> completion) override;
  void add(NotificationRequest request,
           std::function<void(std::optional<std::string> error)> completion) override;
};

}  // namespace hushbox
