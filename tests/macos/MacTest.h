#pragma once

#include <gtest/gtest.h>

#include "tests/macos/doubles/AccessibilityDouble.h"
#include "tests/macos/doubles/BundleDouble.h"
#include "tests/macos/doubles/Calls.h"
#include "tests/macos/doubles/CoreAudioDouble.h"
#include "tests/macos/doubles/LogDouble.h"
#include "tests/macos/doubles/RunLoopDouble.h"
#include "tests/macos/doubles/ServiceDouble.h"
#include "tests/macos/doubles/StatusBarDouble.h"
#include "tests/macos/doubles/TaskDouble.h"
#include "tests/macos/doubles/UserNotificationsDouble.h"
#include "tests/macos/runtime/AutoreleasePool.h"
#include "tests/macos/runtime/Failure.h"
#include "tests/macos/runtime/LiveObjects.h"

namespace hushbox {

/// Brings every double of the platform back to its beginning, its clock apart.
void resetDoubles();

/// A fresh Mac for a test of the adapters. At the end, once the test's own members are gone, no
/// Objective-C object and no block may be left.
class MacTest : public testing::Test {
 protected:
  MacTest();
  ~MacTest() override;

  static void settle() { doubles::settle(); }
  static void advance(TimeInterval span) { doubles::advance(span); }

 private:
  /// There before the test: see keepForever.
  long before_;
  void* pool_;
};

}  // namespace hushbox
