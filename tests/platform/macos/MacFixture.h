#pragma once

#include <gtest/gtest.h>

#include "tests/platform/macos/doubles/AccessibilityDouble.h"
#include "tests/platform/macos/doubles/BundleDouble.h"
#include "tests/platform/macos/doubles/Calls.h"
#include "tests/platform/macos/doubles/CoreAudioDouble.h"
#include "tests/platform/macos/doubles/LogDouble.h"
#include "tests/platform/macos/doubles/RunLoopDouble.h"
#include "tests/platform/macos/doubles/ServiceDouble.h"
#include "tests/platform/macos/doubles/StatusBarDouble.h"
#include "tests/platform/macos/doubles/TaskDouble.h"
#include "tests/platform/macos/doubles/UserNotificationsDouble.h"
#include "tests/platform/macos/runtime/AutoreleasePool.h"
#include "tests/platform/macos/runtime/Failure.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

namespace hushbox {

/// Brings every double of the platform back to its beginning, its clock apart.
void resetDoubles();

/// A fresh Mac for a test of the adapters. At the end, once the test's own members are gone, no
/// Objective-C object and no block may be left.
class MacFixture : public testing::Test {
 protected:
  MacFixture();
  ~MacFixture() override;

  static void settle() { doubles::settle(); }
  static void advance(TimeInterval span) { doubles::advance(span); }

 private:
  /// There before the test: see keepForever.
  long before_;
  void* pool_;
};

}  // namespace hushbox
