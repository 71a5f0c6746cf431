#pragma once

#include "platform/MainLoop.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a main loop; the case runs on its main thread.
class MainLoopDriver : public ContractDriver {
 public:
  virtual MainLoop& loop() = 0;

  /// Keeps the calling thread busy for so long without running the loop: sleeps, on real clocks.
  virtual void keepBusy(TimeInterval span) = 0;
};

}  // namespace hushbox
