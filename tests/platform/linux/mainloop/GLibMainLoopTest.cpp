#include "platform/linux/mainloop/GLibMainLoop.h"

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <ctime>
#include <future>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/OwnProcess.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::holdsWithin;
using rehearsal::letPass;
using rehearsal::serverTimeout;
using std::chrono::milliseconds;

class GLibMainLoopTest : public testing::Test {
 protected:
  /// Runs the loop until `predicate` holds.
  void runUntil(const std::function<bool()>& predicate) {
    EXPECT_TRUE(holdsWithin(predicate, serverTimeout));
  }

  GLibMainLoop loop_;
};

Instant bootTime() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return Instant{std::chrono::seconds{time.tv_sec} + std::chrono::nanoseconds{time.tv_nsec}};
}

TEST_F(GLibMainLoopTest, ClockIncludesTheMachinesSleep) {
  const Instant before = bootTime();
  const Instant now = loop_.now();
  EXPECT_LE(before, now);
  EXPECT_LE(now, bootTime());
}

TEST_F(GLibMainLoopTest, MainThreadIsTheOneThatConstructedTheLoop) {
  EXPECT_TRUE(loop_.isMainThread());
  EXPECT_FALSE(std::async(std::launch::async, [&] { return loop_.isMainThread(); }).get());
}

TEST_F(GLibMainLoopTest, DeliversEarlierEventsBeforeEachTimerAfterTheLoopWasBusy) {
  const Instant start = loop_.now();
  std::vector<int> order;
  std::vector<std::pair<milliseconds, int>> events{{5ms, 1}, {25ms, 3}, {45ms, 5}};
  loop_.setBeforeTimer([&](Instant due) {
    while (!events.empty() && start + events.front().first <= due) {
      order.push_back(events.front().second);
      events.erase(events.begin());
    }
  });
  loop_.mainAsyncAfter(TimeInterval(0.030), WorkItem([&] { order.push_back(4); }));
  loop_.mainAsyncAfter(TimeInterval(0.015), WorkItem([&] { order.push_back(2); }));
  std::this_thread::sleep_for(50ms);
  runUntil([&] { return order.size() >= 4; });
  EXPECT_EQ(order, (std::vector{1, 2, 3, 4}));
}

TEST_F(GLibMainLoopTest, DelayedBlocksNeverRunEarlyAndRunInTheOrderOfTheirTimes) {
  // The loop reads the clock during the call, so the due time is known within bounds.
  struct Due {
    Instant earliest, latest;
  };
  std::vector<Due> due(60);
  std::vector<Due> order;
  for (std::size_t i = 0; i < due.size(); ++i) {
    const TimeInterval delay{static_cast<double>(due.size() - i) * 0.0007};
    const auto span = std::chrono::duration_cast<Instant::duration>(delay);
    due[i].earliest = loop_.now() + span;
    loop_.mainAsyncAfter(delay, WorkItem([this, &order, &own = due[i]] {
                           EXPECT_GE(loop_.now(), own.earliest);
                           order.push_back(own);
                         }));
    due[i].latest = loop_.now() + span + 1ns;
  }
  runUntil([&] { return order.size() == due.size(); });
  for (std::size_t i = 1; i < order.size(); ++i) EXPECT_GE(order[i].latest, order[i - 1].earliest);
}

TEST_F(GLibMainLoopTest, BounceWindowIsAccurateToHundredths) {
  const Instant start = loop_.now();
  TimeInterval elapsed{};
  loop_.mainAsyncAfter(300ms, WorkItem([&] { elapsed = loop_.now() - start; }));
  runUntil([&] { return elapsed.count() > 0; });
  EXPECT_GE(elapsed.count(), 0.3);
  EXPECT_LT(elapsed.count(), 0.4);
}

TEST_F(GLibMainLoopTest, ZeroDelayRunsSoonButNotWithinTheCall) {
  int runs = 0;
  for (const double delay : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()})
    loop_.mainAsyncAfter(TimeInterval{delay}, WorkItem([&] { ++runs; }));
  EXPECT_EQ(runs, 0);
  runUntil([&] { return runs == 3; });
}

TEST_F(GLibMainLoopTest, InfiniteDelayIsNeverDue) {
  bool ran = false;
  loop_.mainAsyncAfter(TimeInterval{std::numeric_limits<double>::infinity()},
                       WorkItem([&] { ran = true; }));
  letPass(20ms);
  EXPECT_FALSE(ran);
}

TEST_F(GLibMainLoopTest, CancelledItemDoesNotRunAndReleasesItsBlockAtOnce) {
  const auto held = std::make_shared<int>();
  bool ran = false;
  WorkItem item([&ran, held] { ran = true; });
  loop_.mainAsyncAfter(5ms, item);
  EXPECT_EQ(held.use_count(), 2);
  item.cancel();
  EXPECT_EQ(held.use_count(), 1);
  letPass(30ms);
  EXPECT_FALSE(ran);
}

TEST_F(GLibMainLoopTest, RepeatingTimerDoesNotDriftWhileTheLoopIsBusy) {
  const milliseconds interval{40};
  const Instant start = loop_.now();
  int firings = 0;
  auto timer = loop_.scheduleRepeating(interval, [&] {
    ++firings;
    loop_.mainAsyncAfter(interval * 3 / 4,
                         WorkItem([&] { std::this_thread::sleep_for(interval / 2); }));
  });
  runUntil([&] { return loop_.now() - start >= 20 * interval; });
  // Counting each interval from the last firing would give 16.
  EXPECT_GE(firings, 18);
  EXPECT_LE(firings, 20);
}

TEST_F(GLibMainLoopTest, MissedFiringsRunOnce) {
  const milliseconds interval{10};
  const Instant start = loop_.now();
  std::vector<std::int64_t> multiples;
  auto timer = loop_.scheduleRepeating(interval, [&] {
    multiples.push_back((loop_.now() - start) / interval);
    if (multiples.size() == 1) std::this_thread::sleep_for(105ms);
  });
  runUntil([&] { return multiples.size() == 6; });
  EXPECT_GE(multiples[0], 1);
  EXPECT_GE(multiples[1], 11);
  EXPECT_EQ(std::ranges::adjacent_find(multiples), multiples.end());
}

TEST_F(GLibMainLoopTest, TimerKeepsFiringWithoutItsRegistration) {
  int firings = 0;
  {
    const RegistrationToken timer = loop_.scheduleRepeating(1ms, [&] { ++firings; });
    EXPECT_TRUE(timer);
  }
  runUntil([&] { return firings >= 3; });
}

TEST_F(GLibMainLoopTest, ZeroIntervalDoesNotStarveOtherSources) {
  int firings = 0;
  bool ran = false;
  auto timer = loop_.scheduleRepeating(TimeInterval{0}, [&] { ++firings; });
  runUntil([&] { return firings >= 10; });
  loop_.mainAsync([&] { ran = true; });
  runUntil([&] { return ran; });
}

TEST_F(GLibMainLoopTest, BlocksThatPostThemselvesDoNotStarveOtherSources) {
  bool done = false;
  int others = 0;
  std::function<void()> postAgain = [&] {
    if (!done) loop_.mainAsync(postAgain);
  };
  std::function<void()> delayAgain = [&] {
    if (!done) loop_.mainAsyncAfter(TimeInterval{0}, WorkItem(delayAgain));
  };
  postAgain();
  delayAgain();
  loop_.mainAsyncAfter(5ms, WorkItem([&] { ++others; }));
  loop_.mainAsyncAfter(10ms, WorkItem([&] { loop_.mainAsync([&] { ++others; }); }));
  runUntil([&] { return others == 2; });
  done = true;
}

TEST_F(GLibMainLoopTest, DestructorRemovesAllSourcesAndBlocks) {
  const auto held = std::make_shared<int>();
  std::atomic<int> runs = 0;
  const auto block = [&runs, held] { ++runs; };
  {
    GLibMainLoop loop;
    auto timer = loop.scheduleRepeating(1ms, block);
    loop.mainAsyncAfter(1ms, WorkItem(block));
    loop.mainAsync(block);
  }
  EXPECT_EQ(held.use_count(), 2);
  letPass(20ms);
  EXPECT_EQ(runs, 0);
}

TEST_F(GLibMainLoopTest, PostedBlocksRunLaterOnTheMainThreadInTheOrderOfEachThreadsCalls) {
  constexpr int threads = 4;
  constexpr int blocks = 5'000;
  std::vector<std::vector<int>> seen(threads);
  std::vector<std::jthread> posters;
  for (int thread = 0; thread < threads; ++thread) {
    posters.emplace_back([&, thread] {
      for (int i = 0; i < blocks; ++i) {
        loop_.mainAsync([&, thread, i] {
          EXPECT_TRUE(loop_.isMainThread());
          seen[static_cast<std::size_t>(thread)].push_back(i);
        });
      }
    });
  }
  runUntil([&] {
    return std::ranges::all_of(seen, [](const auto& one) { return one.size() == blocks; });
  });
  for (const auto& one : seen) EXPECT_TRUE(std::ranges::is_sorted(one));
}

TEST_F(GLibMainLoopTest, PostedBlockWakesASleepingLoop) {
  std::jthread poster([&] {
    std::this_thread::sleep_for(20ms);
    loop_.mainAsync([&] { loop_.terminate(); });
  });
  EXPECT_EQ(loop_.run(), 0);
}

TEST_F(GLibMainLoopTest, UtilityBlocksRunInParallelOnBackgroundThreads) {
  std::promise<void> first, second;
  std::atomic<int> met = 0;
  const auto meet = [&](std::promise<void>& mine, std::promise<void>& other) {
    EXPECT_FALSE(loop_.isMainThread());
    mine.set_value();
    if (other.get_future().wait_for(serverTimeout) == std::future_status::ready) ++met;
  };
  loop_.utilityAsync([&] { meet(first, second); });
  loop_.utilityAsync([&] { meet(second, first); });
  runUntil([&] { return met == 2; });
  loop_.finishUtilityWork();
}

TEST_F(GLibMainLoopTest, UtilityBlocksRunAtALowerPriority) {
  std::atomic<int> nice = 100;
  loop_.utilityAsync([&] { nice = getpriority(PRIO_PROCESS, 0); });
  runUntil([&] { return nice != 100; });
  EXPECT_EQ(nice, std::min(19, getpriority(PRIO_PROCESS, 0) + UtilityQueue::niceness));
}

TEST_F(GLibMainLoopTest, UtilityBlocksBeyondMaxThreadsWait) {
  std::atomic<std::size_t> atOnce = 0, max = 0, done = 0;
  const std::size_t blocks = 10 * UtilityQueue::maxThreads;
  for (std::size_t i = 0; i < blocks; ++i) {
    loop_.utilityAsync([&] {
      std::size_t present = ++atOnce, seen = max;
      while (present > seen && !max.compare_exchange_weak(seen, present)) {
      }
      std::this_thread::sleep_for(2ms);
      --atOnce;
      ++done;
    });
  }
  runUntil([&] { return done == blocks; });
  EXPECT_LE(max, UtilityQueue::maxThreads);
  EXPECT_GE(max, 2U);
}

TEST_F(GLibMainLoopTest, UtilityThreadsExitWhenThereIsNoWork) {
  const auto before = own_process::threads();
  std::atomic<int> done = 0;
  for (int i = 0; i < 20; ++i) loop_.utilityAsync([&] { ++done; });
  runUntil([&] { return done == 20; });
  runUntil([&] { return own_process::threads() == before; });
}

TEST_F(GLibMainLoopTest, UtilityBlockIsDestroyedOnItsThreadAfterItHasRun) {
  struct Witness {
    std::promise<std::thread::id>& destroyedOn;
    explicit Witness(std::promise<std::thread::id>& promise) : destroyedOn(promise) {}
    ~Witness() { destroyedOn.set_value(std::this_thread::get_id()); }
  };
  std::promise<std::thread::id> destroyedOn, ranOn;
  loop_.utilityAsync([&ranOn, witness = std::make_shared<Witness>(destroyedOn)] {
    ranOn.set_value(std::this_thread::get_id());
  });
  EXPECT_EQ(ranOn.get_future().get(), destroyedOn.get_future().get());
}

TEST_F(GLibMainLoopTest, FinishingWaitsForRunningUtilityBlocksAndDropsTheRest) {
  std::atomic<std::size_t> begun = 0, ended = 0;
  std::atomic<bool> open = false;
  const auto held = std::make_shared<int>();
  for (std::size_t i = 0; i < 3 * UtilityQueue::maxThreads; ++i) {
    loop_.utilityAsync([&, held] {
      ++begun;
      while (!open) std::this_thread::sleep_for(1ms);
      ++ended;
    });
  }
  runUntil([&] { return begun == UtilityQueue::maxThreads; });
  std::jthread opener([&] {
    std::this_thread::sleep_for(30ms);
    open = true;
  });
  loop_.finishUtilityWork();
  EXPECT_EQ(ended, UtilityQueue::maxThreads);
  EXPECT_EQ(begun, ended);
  EXPECT_EQ(held.use_count(), 1);
  loop_.utilityAsync([&] { ++ended; });
  runUntil([&] { return ended == UtilityQueue::maxThreads + 1; });
}

TEST_F(GLibMainLoopTest, TerminateEndsTheRunWithStatusZero) {
  loop_.mainAsync([&] { loop_.terminate(); });
  EXPECT_EQ(loop_.run(), 0);
}

TEST_F(GLibMainLoopTest, TerminateBeforeTheRunEndsItAtOnce) {
  loop_.terminate();
  EXPECT_EQ(loop_.run(), 0);
}

class GLibMainLoopSignalTest : public GLibMainLoopTest, public testing::WithParamInterface<int> {};

TEST_P(GLibMainLoopSignalTest, EndsTheRunWithStatusZeroAndIsRestored) {
  loop_.mainAsync([] { kill(getpid(), GetParam()); });
  EXPECT_EQ(loop_.run(), 0);
  struct sigaction action {};
  sigaction(GetParam(), nullptr, &action);
  EXPECT_EQ(action.sa_handler, SIG_DFL);
}

INSTANTIATE_TEST_SUITE_P(SessionEnd, GLibMainLoopSignalTest,
                         testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(GLibMainLoopTest, IdleLoopDoesNotWakeUp) {
  loop_.mainAsyncAfter(500ms, WorkItem([&] { loop_.terminate(); }));
  rusage before{}, after{};
  getrusage(RUSAGE_THREAD, &before);
  loop_.run();
  getrusage(RUSAGE_THREAD, &after);
  EXPECT_LE(after.ru_nvcsw - before.ru_nvcsw, 5);
}

TEST(GLibMainLoopDeathTest, ProgramWithoutDescriptorsForItEndsWithAMessage) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // GLib would end the program first.
  g_main_context_default();
  const auto setUp = [] {
    const rlimit none{3, 3};
    setrlimit(RLIMIT_NOFILE, &none);
    GLibMainLoop loop;
  };
  EXPECT_EXIT(setUp(), testing::KilledBySignal(SIGABRT), "cannot set up the main loop");
}

}  // namespace
}  // namespace hushbox
