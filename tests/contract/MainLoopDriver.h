#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "platform/MainLoop.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a main loop. Cases run on its main thread.
class MainLoopDriver : public ContractDriver {
 public:
  virtual MainLoop& loop() = 0;

  /// Blocks the calling thread for `span` without running the loop.
  virtual void keepBusy(TimeInterval span) = 0;

  /// Calls `start`, runs the loop until `start` or its blocks terminate it, and then calls `check`.
  /// Overridden where terminating exits the process.
  virtual void runToTheEnd(const std::function<void()>& start, const std::function<void()>& check) {
    start();
    EXPECT_EQ(loop().run(), 0);
    check();
  }
};

}  // namespace hushbox
