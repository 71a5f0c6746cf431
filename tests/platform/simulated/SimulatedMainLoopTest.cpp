#include "platform/simulated/SimulatedMainLoop.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>
#include <set>
#include <utility>

#include "platform/simulated/SimulatedLocale.h"
#include "tests/platform/simulated/CaughtViolations.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SimulatedMainLoopTest : public testing::Test {
 protected:
  /// Milliseconds since the start.
  double time() { return TimeInterval(loop.now().time_since_epoch()).count() * 1000; }

  void note(const std::string& what) { notes.push_back(what); }
  std::function<void()> noting(const std::string& what) {
    return [this, what] { note(what); };
  }
  void noteAfter(TimeInterval delay, const std::string& what) {
    loop.mainAsyncAfter(delay, WorkItem(noting(what)));
  }

  Journal journal;
  SimulatedMainLoop loop{journal};
  Lines notes;
};

TEST_F(SimulatedMainLoopTest, ClockMovesOnlyWhenAdvancedAndIsExactToTheNanosecond) {
  const Instant start = loop.now();
  EXPECT_EQ(loop.now(), start);
  for (int i = 0; i < 10; ++i) loop.advance(0.1s);
  EXPECT_EQ(loop.now() - start, 1s);
  loop.advance(TimeInterval(0.1 + 0.2));
  // 1.001 as a double is slightly less than 1001 ms.
  loop.advance(1.001s);
  EXPECT_EQ(loop.now() - start, 2301ms);
}

TEST_F(SimulatedMainLoopTest, ItemDueExactlyAtTheEndOfAnAdvanceRuns) {
  noteAfter(0.3s, "due");
  loop.advance(0.299999999s);
  EXPECT_THAT(notes, IsEmpty());
  loop.advance(0.000000001s);
  EXPECT_THAT(notes, ElementsAre("due"));
}

TEST_F(SimulatedMainLoopTest, RunsInOrderOfDeadlinesWithTheClockAtEach) {
  std::vector<double> times;
  for (const TimeInterval delay : {TimeInterval(0.3), TimeInterval(0.1), TimeInterval(0.2)}) {
    loop.mainAsyncAfter(delay, WorkItem([&] { times.push_back(time()); }));
  }
  loop.advance(1s);
  EXPECT_THAT(times, ElementsAre(100, 200, 300));
  EXPECT_EQ(time(), 1000);
}

TEST_F(SimulatedMainLoopTest, TiesRunInTheOrderOfScheduling) {
  loop.scheduleRepeating(1s, noting("timer"));
  noteAfter(1s, "item");
  loop.advance(0.5s);
  noteAfter(0.5s, "later item");
  loop.advance(0.5s);
  EXPECT_THAT(notes, ElementsAre("timer", "item", "later item"));
}

class SimulatedMainLoopShuffleTest : public SimulatedMainLoopTest {
 protected:
  static Lines order(std::uint64_t seed) {
    Journal journal;
    SimulatedMainLoop loop{journal};
    loop.shuffleTies(seed);
    Lines order;
    for (int i = 0; i < 6; ++i) {
      loop.mainAsyncAfter(1s, WorkItem([&order, i] { order.push_back(std::to_string(i)); }));
    }
    loop.advance(1s);
    return order;
  }
};

TEST_F(SimulatedMainLoopShuffleTest, OrderDependsOnTheSeedOnly) {
  std::set<Lines> orders;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    EXPECT_EQ(order(seed), order(seed));
    Lines sorted = order(seed);
    std::sort(sorted.begin(), sorted.end());
    EXPECT_THAT(sorted, ElementsAre("0", "1", "2", "3", "4", "5"));
    orders.insert(order(seed));
  }
  EXPECT_GT(orders.size(), 10U);
}

TEST_F(SimulatedMainLoopShuffleTest, DeadlinesAndTheOrderOfPostedBlocksHoldForEverySeed) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    notes.clear();
    loop.shuffleTies(seed);
    noteAfter(2ms, "late");
    for (const char* name : {"a", "b", "c", "d"}) loop.mainAsync(noting(name));
    loop.advance(1s);
    EXPECT_THAT(notes, ElementsAre("a", "b", "c", "d", "late"));
  }
}

TEST_F(SimulatedMainLoopTest, TimerIsArmedAgainBeforeItsBlockRuns) {
  loop.scheduleRepeating(1s, [&] {
    note("timer");
    noteAfter(1s, "item of the block");
  });
  loop.advance(2s);
  EXPECT_THAT(notes, ElementsAre("timer", "timer", "item of the block"));
}

TEST_F(SimulatedMainLoopTest, LateFiringDoesNotShiftLaterOnes) {
  std::vector<double> times;
  loop.scheduleRepeating(1s, [&] {
    times.push_back(time());
    // The block takes longer than the interval.
    if (times.size() == 1) loop.sleep(1.2s);
  });
  loop.advance(4s);
  EXPECT_THAT(times, ElementsAre(1000, 2200, 3000, 4000));
}

TEST_F(SimulatedMainLoopTest, SleepRunsNothingAndWakingRunsEachOverdueTimerOnce) {
  loop.scheduleRepeating(1s, noting("second"));
  loop.scheduleRepeating(60s, noting("minute"));
  noteAfter(0.3s, "item");
  loop.sleep(3600s);
  EXPECT_THAT(notes, IsEmpty());
  loop.wake();
  EXPECT_THAT(notes, ElementsAre("item", "second", "minute"));
  loop.advance(2s);
  EXPECT_THAT(notes, ElementsAre("item", "second", "minute", "second", "second"));
}

TEST_F(SimulatedMainLoopTest, WallClockChangesMoveNoDeadline) {
  SimulatedLocale locale{journal, loop};
  locale.setTimeOfDay(10h);
  noteAfter(1s, "item");
  locale.setTimeOfDay(3h);
  loop.advance(0.9s);
  EXPECT_THAT(notes, IsEmpty());
  locale.setTimeOfDay(23h);
  loop.advance(0.1s);
  EXPECT_THAT(notes, ElementsAre("item"));
}

TEST_F(SimulatedMainLoopTest, ItemsOverdueAfterALongBlockWaitForTheNextCall) {
  loop.mainAsyncAfter(1s, WorkItem([&] { loop.sleep(5s); }));
  noteAfter(3s, "overdue");
  loop.advance(2s);
  EXPECT_THAT(notes, IsEmpty());
  EXPECT_EQ(time(), 6000);
  loop.runUntilIdle();
  EXPECT_THAT(notes, ElementsAre("overdue"));
}

TEST_F(SimulatedMainLoopTest, InvalidIntervalsAndDelaysDoNotHangTheLoop) {
  int firings = 0;
  loop.scheduleRepeating(0s, [&] { ++firings; });
  loop.advance(0.01s);
  EXPECT_EQ(firings, 100);
  noteAfter(-1s, "negative");
  noteAfter(TimeInterval(std::numeric_limits<double>::quiet_NaN()), "not a number");
  noteAfter(TimeInterval(std::numeric_limits<double>::infinity()), "never");
  loop.runUntilIdle();
  EXPECT_THAT(notes, ElementsAre("negative", "not a number"));
}

TEST_F(SimulatedMainLoopTest, UtilityBlockRunsInALaterTurnOffTheMainThread) {
  loop.utilityAsync([&] { note(loop.isMainThread() ? "main" : "utility"); });
  EXPECT_THAT(notes, IsEmpty());
  loop.runUntilIdle();
  EXPECT_THAT(notes, ElementsAre("utility"));
  EXPECT_TRUE(loop.isMainThread());
}

TEST_F(SimulatedMainLoopTest, UtilityLatencyPassesBeforeTheBlockRuns) {
  loop.setUtilityLatency(2s);
  loop.utilityAsync(noting("utility"));
  loop.advance(1.9s);
  EXPECT_THAT(notes, IsEmpty());
  loop.advance(0.1s);
  EXPECT_THAT(notes, ElementsAre("utility"));
}

TEST_F(SimulatedMainLoopTest, HeldUtilityBlocksRunInTheOrderOfTheirRelease) {
  loop.utilityAsync(noting("first"));
  loop.holdUtilityQueue();
  loop.utilityAsync(noting("second"));
  loop.utilityAsync(noting("third"));
  loop.advance(100s);
  EXPECT_THAT(notes, IsEmpty());
  EXPECT_EQ(loop.waitingUtilityBlocks(), 3U);
  EXPECT_TRUE(loop.releaseUtilityBlock(1));
  EXPECT_TRUE(loop.releaseUtilityBlock());
  EXPECT_FALSE(loop.releaseUtilityBlock(1));
  EXPECT_THAT(notes, ElementsAre("second", "first"));
  loop.resumeUtilityQueue();
  EXPECT_THAT(notes, ElementsAre("second", "first"));
  loop.runUntilIdle();
  EXPECT_THAT(notes, ElementsAre("second", "first", "third"));
  EXPECT_FALSE(loop.releaseUtilityBlock());
}

TEST_F(SimulatedMainLoopTest, UtilityBlockIsDestroyedOffTheMainThreadBeforeItsHopRuns) {
  std::shared_ptr<void> held(new char, [this](char* nothing) {
    note(loop.isMainThread() ? "destroyed on main" : "destroyed off main");
    delete nothing;
  });
  loop.utilityAsync([this, held = std::move(held)] { loop.mainAsync(noting("hop")); });
  loop.runUntilIdle();
  EXPECT_THAT(notes, ElementsAre("destroyed off main", "hop"));
}

TEST_F(SimulatedMainLoopTest, RunAdvancesTheClockUntilTermination) {
  loop.scheduleRepeating(60s, noting("minute"));
  loop.after(200s, [&] { loop.terminate(); });
  EXPECT_EQ(loop.run(), 0);
  EXPECT_EQ(time(), 200'000);
  EXPECT_THAT(notes, ElementsAre("minute", "minute", "minute"));
  EXPECT_TRUE(loop.terminated());
}

TEST_F(SimulatedMainLoopTest, AdvanceUntilStopsWhenTheConditionHolds) {
  loop.scheduleRepeating(1s, noting("tick"));
  EXPECT_TRUE(loop.advanceUntil([&] { return notes.size() == 3; }, 10s));
  EXPECT_EQ(time(), 3000);
  EXPECT_FALSE(loop.advanceUntil([&] { return notes.size() == 30; }, 10s));
  EXPECT_EQ(time(), 13'000);
}

TEST_F(SimulatedMainLoopTest, JournalRecordsEveryCall) {
  loop.scheduleRepeating(60s, [] {});
  noteAfter(0.3s, "");
  loop.mainAsync([] {});
  loop.utilityAsync([] {});
  loop.after(1s, [] {});
  loop.terminate();
  EXPECT_THAT(journal.take(), ElementsAre("loop: repeat every 60 s", "loop: after 0.3 s",
                                          "loop: post", "loop: utility", "loop: terminate"));
}

TEST_F(SimulatedMainLoopTest, FireEverythingOnceDropsEventsOfTheEnvironment) {
  loop.scheduleRepeating(60s, noting("timer"));
  noteAfter(0.3s, "item");
  loop.mainAsync([&] {
    note("posted");
    loop.mainAsync(noting("posted again"));
  });
  loop.deliver(1s, noting("callback"));
  loop.after(1s, noting("environment"));
  loop.fireEverythingOnce();
  EXPECT_THAT(notes, ElementsAre("posted", "item", "callback", "timer"));
}

TEST_F(SimulatedMainLoopTest, RunningTheLoopFromABlockIsAViolation) {
  const CaughtViolations caught;
  loop.mainAsync([&] { loop.advance(0s); });
  loop.runUntilIdle();
  EXPECT_THAT(caught.messages(), ElementsAre(HasSubstr("run from one of its blocks")));
}

TEST_F(SimulatedMainLoopTest, LoopThatNeverBecomesIdleIsAViolation) {
  const CaughtViolations caught;
  std::function<void()> again = [&] { loop.mainAsync(again); };
  again();
  journal.keepLines(false);
  loop.runUntilIdle();
  EXPECT_THAT(caught.messages(), ElementsAre(HasSubstr("never becomes idle")));
}

TEST_F(SimulatedMainLoopTest, ApplicationThatNothingCanEndIsAViolation) {
  const CaughtViolations caught;
  EXPECT_EQ(loop.run(), 0);
  loop.scheduleRepeating(3600s, [] {});
  EXPECT_EQ(loop.run(), 0);
  EXPECT_THAT(caught.messages(), ElementsAre(HasSubstr("nothing scheduled ever ends it"),
                                             HasSubstr("nothing scheduled ever ends it")));
}

TEST_F(SimulatedMainLoopTest, MainThreadOperationsOffTheMainThreadAreViolations) {
  const CaughtViolations caught;
  loop.runInBackground([&] {
    loop.scheduleRepeating(1s, [] {});
    noteAfter(1s, "");
    loop.utilityAsync([] {});
    loop.terminate();
    loop.mainAsync([] {});
  });
  EXPECT_THAT(caught.messages(),
              ElementsAre(HasSubstr("scheduleRepeating"), HasSubstr("mainAsyncAfter"),
                          HasSubstr("utilityAsync"), HasSubstr("terminate")));
}

}  // namespace
}  // namespace hushbox
