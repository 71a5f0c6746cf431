#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/UserNotifications.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a notification service that gives permission and can show notifications.
class UserNotificationsDriver : public ContractDriver {
 public:
  struct Shown {
    std::string title;
    std::string body;
    friend bool operator==(const Shown&, const Shown&) = default;
  };

  virtual UserNotifications& notifications() = 0;

  /// What the user has been shown, oldest first.
  virtual std::vector<Shown> shown() = 0;

  /// From now on the service takes no notification: it refuses, or is not there any more.
  virtual void breakService() = 0;
};

}  // namespace hushbox
