#pragma once

#include "platform/MainLoop.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a main loop. Cases run on its main thread.
class MainLoopDriver : public ContractDriver {
 public:
  virtual MainLoop& loop() = 0;

  /// Blocks the calling thread for `span` without running the loop.
  virtual void keepBusy(TimeInterval span) = 0;
};

}  // namespace hushbox
