#include "tests/platform/macos/MacFixture.h"

namespace hushbox {

void resetDoubles() {
  const doubles::AutoreleasePool pool;
  doubles::resetTasks();
  doubles::resetRunLoop();
  doubles::resetApplication();
  doubles::resetProcessInfo();
  doubles::resetAudio();
  doubles::resetAccessibility();
  doubles::resetStatusBar();
  doubles::resetUserNotifications();
  doubles::resetService();
  doubles::resetLog();
  doubles::resetBundle();
  doubles::resetCalls();
}

MacFixture::MacFixture() {
  resetDoubles();
  before_ = doubles::liveObjects();
  pool_ = objc_autoreleasePoolPush();
}

MacFixture::~MacFixture() {
  objc_autoreleasePoolPop(pool_);
  resetDoubles();
  EXPECT_EQ(doubles::liveObjects(), before_)
      << "Objects are left over: " << doubles::describeLiveObjects();
}

}  // namespace hushbox
