#pragma once

#include "platform/LoginItem.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a login item, initially not registered, which needs no main loop to run.
class LoginItemDriver : public ContractDriver {
 public:
  virtual LoginItem& loginItem() = 0;

  /// From now on the system refuses every change.
  virtual void refuseChanges() = 0;
};

}  // namespace hushbox
