#pragma once

#include <gtest/gtest.h>

#include "tests/platform/macos/doubles/AccessibilityDouble.h"
#include "tests/platform/macos/doubles/ApplicationDouble.h"
#include "tests/platform/macos/doubles/BundleDouble.h"
#include "tests/platform/macos/doubles/Calls.h"
#include "tests/platform/macos/doubles/CoreAudioDouble.h"
#include "tests/platform/macos/doubles/LogDouble.h"
#include "tests/platform/macos/doubles/ProcessInfoDouble.h"
#include "tests/platform/macos/doubles/RunLoopDouble.h"
#include "tests/platform/macos/doubles/ServiceDouble.h"
#include "tests/platform/macos/doubles/StatusBarDouble.h"
#include "tests/platform/macos/doubles/TaskDouble.h"
#include "tests/platform/macos/doubles/UserNotificationsDouble.h"
#include "tests/platform/macos/runtime/AutoreleasePool.h"
#include "tests/platform/macos/runtime/Failure.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

namespace hushbox {

/// Resets every double except the clock.
void resetDoubles();

/// A fresh Mac for a test of the adapters. The test fails if an Objective-C object or a block is
/// left after its members were destroyed.
class MacFixture : public testing::Test {
 protected:
  MacFixture();
  ~MacFixture() override;

  static void settle() { doubles::settle(); }
  static void advance(TimeInterval span) { doubles::advance(span); }

 private:
  /// The number of objects alive before the test; see keepForever.
  long before_;
  void* pool_;
};

}  // namespace hushbox
