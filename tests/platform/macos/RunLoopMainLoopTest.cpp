#include "platform/macos/RunLoopMainLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

class RunLoopMainLoopTest : public MacFixture {
 protected:
  RunLoopMainLoop loop;
};

TEST_F(RunLoopMainLoopTest, ClockIsTheOneThatGoesOnDuringSleep) {
  const Instant before = loop.now();
  doubles::keepBusy(TimeInterval(1.5));
  EXPECT_EQ(loop.now() - before, std::chrono::milliseconds(1500));
}

TEST_F(RunLoopMainLoopTest, RepeatingTimerIsNotStoppedByAnOpenMenu) {
  int firings = 0;
  loop.scheduleRepeating(TimeInterval(1), [&] { ++firings; });
  doubles::setTracking(true);
  advance(TimeInterval(3));
  EXPECT_EQ(firings, 3);
}

TEST_F(RunLoopMainLoopTest, TimerIsScheduledOnceAndLivesOnByItself) {
  int firings = 0;
  loop.scheduleRepeating(TimeInterval(60), [&] { ++firings; });
  EXPECT_EQ(doubles::timerCount(), 1U);
  advance(TimeInterval(121));
  EXPECT_EQ(firings, 2);
}

TEST_F(RunLoopMainLoopTest, DelayedWorkKeepsToItsDelayToTheNanosecond) {
  bool ran = false;
  const WorkItem item([&] { ran = true; });
  loop.mainAsyncAfter(TimeInterval(0.3), item);
  advance(std::chrono::nanoseconds(299'999'999));
  EXPECT_FALSE(ran);
  advance(std::chrono::nanoseconds(1));
  EXPECT_TRUE(ran);
}

TEST_F(RunLoopMainLoopTest, BlocksAreReleasedOnceTheyHaveRun) {
  const auto held = std::make_shared<int>(0);
  const auto round = [&] {
    const doubles::AutoreleasePool pool;
    loop.mainAsync([held] { ++*held; });
    loop.utilityAsync([held] { ++*held; });
    loop.mainAsyncAfter(TimeInterval(0.1), WorkItem([held] { ++*held; }));
    advance(TimeInterval(1));
  };
  round();
  EXPECT_EQ(*held, 3);
  EXPECT_EQ(held.use_count(), 1);
  const long before = doubles::liveObjects();
  round();
  EXPECT_EQ(doubles::liveObjects(), before);
}

TEST_F(RunLoopMainLoopTest, NothingOfABackgroundBlockIsLeftWithItsPoster) {
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> seen = held;
  loop.utilityAsync([held = std::move(held)] { ++*held; });
  EXPECT_EQ(seen.use_count(), 1);
  advance(TimeInterval(1));
  EXPECT_TRUE(seen.expired());
}

TEST_F(RunLoopMainLoopTest, TerminationIsAskedForAfterTheAskerIsDone) {
  std::vector<int> order;
  loop.mainAsync([&] {
    loop.terminate();
    EXPECT_FALSE(doubles::isTerminated());
    order.push_back(1);
    loop.mainAsync([&] { order.push_back(2); });
  });
  EXPECT_EQ(loop.run(), 0);
  EXPECT_EQ(order, std::vector{1});
}

}  // namespace
}  // namespace hushbox
