#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/UserNotifications.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a notification service that grants permission and shows notifications.
class UserNotificationsDriver : public ContractDriver {
 public:
  struct Shown {
    std::string title;
    std::string body;
    friend bool operator==(const Shown&, const Shown&) = default;
  };

  virtual UserNotifications& notifications() = 0;

  /// Returns the notifications shown so far, oldest first.
  virtual std::vector<Shown> shown() = 0;

  /// From now on every notification fails: the service refuses it or is gone.
  virtual void breakService() = 0;
};

}  // namespace hushbox
