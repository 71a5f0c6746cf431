#include "tests/macos/MacTest.h"

namespace hushbox {

void resetDoubles() {
  const doubles::AutoreleasePool pool;
  doubles::resetTasks();
  doubles::resetRunLoop();
  doubles::resetAudio();
  doubles::resetAccessibility();
  doubles::resetStatusBar();
  doubles::resetUserNotifications();
  doubles::resetService();
  doubles::resetLog();
  doubles::resetBundle();
  doubles::resetCalls();
}

MacTest::MacTest() {
  resetDoubles();
  before_ = doubles::liveObjects();
  pool_ = objc_autoreleasePoolPush();
}

MacTest::~MacTest() {
  objc_autoreleasePoolPop(pool_);
  resetDoubles();
  EXPECT_EQ(doubles::liveObjects(), before_)
      << "Objects are left over: " << doubles::describeLiveObjects();
}

}  // namespace hushbox
