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

TEST_F(RunLoopMainLoopTest, ClockContinuesDuringSleep) {
  const Instant before = loop.now();
  doubles::keepBusy(TimeInterval(1.5));
  EXPECT_EQ(loop.now() - before, std::chrono::milliseconds(1500));
}

TEST_F(RunLoopMainLoopTest, OpenMenuDoesNotStopARepeatingTimer) {
  int firings = 0;
  loop.scheduleRepeating(TimeInterval(1), [&] { ++firings; });
  doubles::setTracking(true);
  advance(TimeInterval(3));
  EXPECT_EQ(firings, 3);
}

TEST_F(RunLoopMainLoopTest, TimerRepeatsWithoutAnOwner) {
  int firings = 0;
  loop.scheduleRepeating(TimeInterval(60), [&] { ++firings; });
  EXPECT_EQ(doubles::timerCount(), 1U);
  advance(TimeInterval(121));
  EXPECT_EQ(firings, 2);
}

TEST_F(RunLoopMainLoopTest, DelayedWorkRunsAfterItsDelayToTheNanosecond) {
  bool ran = false;
  const WorkItem item([&] { ran = true; });
  loop.mainAsyncAfter(TimeInterval(0.3), item);
  advance(std::chrono::nanoseconds(299'999'999));
  EXPECT_FALSE(ran);
  advance(std::chrono::nanoseconds(1));
  EXPECT_TRUE(ran);
}

TEST_F(RunLoopMainLoopTest, DelayIsRoundedUpToANanosecond) {
  bool ran = false;
  const WorkItem item([&] { ran = true; });
  loop.mainAsyncAfter(TimeInterval(1) / 3, item);
  advance(std::chrono::nanoseconds(333'333'333));
  EXPECT_FALSE(ran);
  advance(std::chrono::nanoseconds(1));
  EXPECT_TRUE(ran);
}

TEST_F(RunLoopMainLoopTest, ReleasesBlocksAfterTheyRun) {
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

TEST_F(RunLoopMainLoopTest, CallerKeepsNothingOfABackgroundBlock) {
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> seen = held;
  loop.utilityAsync([held = std::move(held)] { ++*held; });
  EXPECT_EQ(seen.use_count(), 1);
  advance(TimeInterval(1));
  EXPECT_TRUE(seen.expired());
}

TEST_F(RunLoopMainLoopTest, ActivityIsLatencyCriticalAndLetsTheMachineSleep) {
  const auto activity = loop.beginActivity("The speakerphone is in use");
  const auto held = doubles::activities();
  ASSERT_EQ(held.size(), 1U);
  EXPECT_EQ(held[0].options, 0xFF'00EF'FFFFU);
  EXPECT_EQ(held[0].reason, "The speakerphone is in use");
}

TEST_F(RunLoopMainLoopTest, ActivityEndsWithItsOwnerAndNoOther) {
  auto first = loop.beginActivity("first");
  const auto second = loop.beginActivity("second");
  first = nullptr;
  ASSERT_EQ(doubles::activities().size(), 1U);
  EXPECT_EQ(doubles::activities()[0].reason, "second");
}

TEST_F(RunLoopMainLoopTest, TimersAndDelayedWorkNapWithoutAnActivityOnly) {
  int firings = 0;
  bool ran = false;
  loop.scheduleRepeating(TimeInterval(1), [&] { ++firings; });
  doubles::setNapping(true);
  advance(TimeInterval(60));
  EXPECT_LE(firings, 7);
  const auto activity = loop.beginActivity("test");
  firings = 0;
  const WorkItem item([&] { ran = true; });
  loop.mainAsyncAfter(TimeInterval(0.3), item);
  advance(TimeInterval(0.3));
  EXPECT_TRUE(ran);
  advance(TimeInterval(59.7));
  // One firing was overdue when the activity began.
  EXPECT_EQ(firings, 61);
}

TEST_F(RunLoopMainLoopTest, TerminatesAfterTheCallerReturns) {
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
