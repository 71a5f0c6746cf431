#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "support/Lifetime.h"
#include "tests/contract/Contract.h"
#include "tests/contract/MainLoopDriver.h"

namespace hushbox {

/// What every MainLoop does. A timer may outlive its case, because some platforms own it, so its
/// block holds the case's variables by a Lifetime.
using MainLoopContract = Contract<MainLoopDriver>;

/// Returns an object that calls `action` when it is destroyed; captured by a block, it shows when
/// and on which thread the block is destroyed.
inline std::shared_ptr<void> atDestruction(std::function<void()> action) {
  return {new char, [action = std::move(action)](char* nothing) {
            action();
            delete nothing;
          }};
}

TEST_P(MainLoopContract, ClockAdvancesByAtLeastTheTimeThatPasses) {
  const Instant before = driver().loop().now();
  driver().keepBusy(TimeInterval(0.05));
  EXPECT_GE(driver().loop().now() - before, std::chrono::milliseconds(50));
}

TEST_P(MainLoopContract, RepeatingTimerFirstFiresAfterOneInterval) {
  MainLoop& loop = driver().loop();
  std::vector<Instant> firings;
  const Instant start = loop.now();
  const Lifetime lifetime;
  const RegistrationToken timer = loop.scheduleRepeating(TimeInterval(0.05), lifetime.weakly([&] {
    EXPECT_TRUE(loop.isMainThread());
    firings.push_back(loop.now());
  }));
  ASSERT_TRUE(timer);
  ASSERT_TRUE(driver().waitFor([&] { return firings.size() >= 3; }));
  for (std::size_t i = 0; i < firings.size(); ++i) {
    // Deadlines may be multiples of the interval, so the firing after a late one may come sooner.
    EXPECT_GE(firings[i] - start, (i + 1) * std::chrono::milliseconds(50)) << "firing " << i;
  }
}

TEST_P(MainLoopContract, RepeatingTimerContinuesAfterItsTokenIsDestroyed) {
  int firings = 0;
  const Lifetime lifetime;
  driver().loop().scheduleRepeating(TimeInterval(0.01), lifetime.weakly([&] { ++firings; }));
  EXPECT_TRUE(driver().waitFor([&] { return firings >= 3; }));
}

TEST_P(MainLoopContract, MissedFiringsOfARepeatingTimerAreNotMadeUpFor) {
  MainLoop& loop = driver().loop();
  int firings = 0;
  const Lifetime lifetime;
  loop.scheduleRepeating(TimeInterval(0.05), lifetime.weakly([&] { ++firings; }));
  driver().keepBusy(TimeInterval(1));
  const Instant awake = loop.now();
  ASSERT_TRUE(driver().waitFor([&] { return firings > 0; }));
  driver().letPass(TimeInterval(0.1));
  EXPECT_LE(firings, 2 + (loop.now() - awake) / std::chrono::milliseconds(50));
}

TEST_P(MainLoopContract, TimerMayScheduleAnotherFromItsBlock) {
  MainLoop& loop = driver().loop();
  int inner = 0;
  bool scheduled = false;
  const Lifetime lifetime;
  loop.scheduleRepeating(TimeInterval(0.01), lifetime.weakly([&] {
    if (std::exchange(scheduled, true)) return;
    loop.scheduleRepeating(TimeInterval(0.01), lifetime.weakly([&] { ++inner; }));
  }));
  EXPECT_TRUE(driver().waitFor([&] { return inner >= 2; }));
}

TEST_P(MainLoopContract, WorkItemRunsOnceAfterItsDelay) {
  MainLoop& loop = driver().loop();
  std::vector<Instant> runs;
  const Instant start = loop.now();
  const WorkItem item([&] {
    EXPECT_TRUE(loop.isMainThread());
    runs.push_back(loop.now());
  });
  loop.mainAsyncAfter(TimeInterval(0.05), item);
  EXPECT_TRUE(runs.empty());
  ASSERT_TRUE(driver().waitFor([&] { return !runs.empty(); }));
  EXPECT_GE(runs[0] - start, std::chrono::milliseconds(50));
  driver().letPass(TimeInterval(0.15));
  EXPECT_EQ(runs.size(), 1U);
}

TEST_P(MainLoopContract, WorkItemRunsAfterItIsDestroyed) {
  bool ran = false;
  driver().loop().mainAsyncAfter(TimeInterval(0.01), WorkItem([&] { ran = true; }));
  EXPECT_TRUE(driver().waitFor([&] { return ran; }));
}

TEST_P(MainLoopContract, CancelledWorkItemNeverRunsAndDestroysItsBlock) {
  bool ran = false;
  bool released = false;
  WorkItem item([&ran, held = atDestruction([&] { released = true; })] { ran = true; });
  driver().loop().mainAsyncAfter(TimeInterval(0.01), item);
  item.cancel();
  EXPECT_TRUE(released);
  driver().letPass(TimeInterval(0.1));
  EXPECT_FALSE(ran);
}

TEST_P(MainLoopContract, WorkItemOfZeroDelayRunsInALaterTurn) {
  bool ran = false;
  driver().loop().mainAsyncAfter(TimeInterval(0), WorkItem([&] { ran = true; }));
  EXPECT_FALSE(ran);
  EXPECT_TRUE(driver().waitFor([&] { return ran; }));
}

TEST_P(MainLoopContract, EarlierDeadlinesRunEarlier) {
  std::vector<int> order;
  for (const int tenths : {3, 1, 2}) {
    driver().loop().mainAsyncAfter(TimeInterval(0.1 * tenths),
                                   WorkItem([&order, tenths] { order.push_back(tenths); }));
  }
  ASSERT_TRUE(driver().waitFor([&] { return order.size() == 3; }));
  EXPECT_EQ(order, (std::vector{1, 2, 3}));
}

TEST_P(MainLoopContract, PostedBlocksRunLaterOnTheMainThreadInOrder) {
  MainLoop& loop = driver().loop();
  std::vector<int> order;
  for (int i = 0; i < 5; ++i) {
    loop.mainAsync([&, i] {
      EXPECT_TRUE(loop.isMainThread());
      order.push_back(i);
    });
  }
  EXPECT_TRUE(order.empty());
  ASSERT_TRUE(driver().waitFor([&] { return order.size() == 5; }));
  EXPECT_EQ(order, (std::vector{0, 1, 2, 3, 4}));
}

TEST_P(MainLoopContract, BlockPostedFromABlockRunsAfterIt) {
  MainLoop& loop = driver().loop();
  std::vector<int> order;
  loop.mainAsync([&] {
    loop.mainAsync([&] { order.push_back(2); });
    order.push_back(1);
  });
  ASSERT_TRUE(driver().waitFor([&] { return order.size() == 2; }));
  EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST_P(MainLoopContract, UtilityBlockRunsAndIsDestroyedOffTheMainThreadAndCanHopBack) {
  MainLoop& loop = driver().loop();
  std::atomic<bool> ranOnMain = true;
  std::atomic<bool> destroyedOnMain = true;
  std::atomic<bool> destroyed = false;
  bool hoppedToMain = false;
  ASSERT_TRUE(loop.isMainThread());
  loop.utilityAsync([&, held = atDestruction([&] {
                          destroyedOnMain = loop.isMainThread();
                          destroyed = true;
                        })] {
    ranOnMain = loop.isMainThread();
    loop.mainAsync([&] { hoppedToMain = loop.isMainThread(); });
  });
  ASSERT_TRUE(driver().waitFor([&] { return destroyed && hoppedToMain; }));
  EXPECT_FALSE(ranOnMain);
  EXPECT_FALSE(destroyedOnMain);
}

TEST_P(MainLoopContract, EveryUtilityBlockRuns) {
  std::atomic<int> ran = 0;
  for (int i = 0; i < 20; ++i) driver().loop().utilityAsync([&] { ++ran; });
  EXPECT_TRUE(driver().waitFor([&] { return ran == 20; }));
}

TEST_P(MainLoopContract, TerminateReturnsAtOnceAndRunReturnsZero) {
  MainLoop& loop = driver().loop();
  bool returned = false;
  bool ranAfterwards = false;
  const Lifetime lifetime;
  driver().runToTheEnd(
      [&] {
        loop.mainAsync([&] {
          loop.mainAsyncAfter(TimeInterval(0.05),
                              WorkItem(lifetime.weakly([&] { ranAfterwards = true; })));
          loop.terminate();
          returned = true;
        });
      },
      [&] {
        EXPECT_TRUE(returned);
        EXPECT_FALSE(ranAfterwards);
      });
}

TEST_P(MainLoopContract, TimersPostedBlocksAndWorkItemsRunDuringRun) {
  MainLoop& loop = driver().loop();
  int firings = 0;
  bool posted = false;
  const Lifetime lifetime;
  driver().runToTheEnd(
      [&] {
        loop.scheduleRepeating(TimeInterval(0.02), lifetime.weakly([&] { ++firings; }));
        loop.mainAsync([&] { posted = true; });
        loop.mainAsyncAfter(TimeInterval(0.1), WorkItem([&] { loop.terminate(); }));
      },
      [&] {
        EXPECT_TRUE(posted);
        EXPECT_GE(firings, 1);
      });
}

TEST_P(MainLoopContract, ActivitiesOverlapAndMayOutliveATimer) {
  MainLoop& loop = driver().loop();
  auto first = loop.beginActivity("first");
  const auto second = loop.beginActivity("second");
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  first = nullptr;
  int firings = 0;
  const Lifetime lifetime;
  loop.scheduleRepeating(TimeInterval(0.01), lifetime.weakly([&] { ++firings; }));
  EXPECT_TRUE(driver().waitFor([&] { return firings >= 2; }));
}

}  // namespace hushbox
