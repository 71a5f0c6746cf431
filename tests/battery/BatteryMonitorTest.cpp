#include "battery/BatteryMonitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* tool = "/usr/bin/pmset";

/// A monitor on the simulated desk. Its announcements and completions are in the journal, among the
/// platform's calls, as part "monitor", with the values of the members at that moment.
class BatteryMonitorTest : public testing::Test {
 protected:
  void make() {
    monitor = BatteryMonitor::make("Jabra");
    subscription = monitor->objectWillChange.subscribe([this] { hear("will change"); });
  }

  /// Does the same, finishes the first reading and clears the journal.
  void makeAndRead() {
    make();
    desk.loop.runUntilIdle();
    desk.journal.take();
  }

  void refresh() {
    monitor->refresh([this] { hear("completion"); });
  }

  void hear(const std::string& what) {
    const auto level = monitor->level();
    desk.journal.add("monitor", what, " at ", level ? std::to_string(*level) : "none",
                     monitor->isCharging() ? " charging" : "");
  }

  void release() {
    subscription = {};
    monitor.reset();
  }

  SimulatedDesk desk;
  std::shared_ptr<BatteryMonitor> monitor;
  Subscription subscription;
};

TEST_F(BatteryMonitorTest, IsEmptyUntilTheFirstReadingIsPublished) {
  desk.setBattery(62);
  make();
  EXPECT_EQ(monitor->level(), std::nullopt);
  EXPECT_FALSE(monitor->isCharging());
  desk.loop.runUntilIdle();
  EXPECT_EQ(monitor->level(), 62);
  EXPECT_FALSE(monitor->isCharging());
}

TEST_F(BatteryMonitorTest, StartsTheFirstReadingBeforeItsTimer) {
  make();
  EXPECT_THAT(desk.journal.take(), ElementsAre("loop: utility", "loop: repeat every 60 s"));
}

TEST_F(BatteryMonitorTest, ReadingTakesItsStepsInOrder) {
  desk.setBatteryReport("Jabra 45%; charging");
  make();
  desk.journal.take();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("processes: 1 make", "processes: 1 executable /usr/bin/pmset",
                          "processes: 1 arguments -g accps", "processes: 1 launch -> true",
                          "processes: 1 read 19 bytes", "processes: 1 wait", "loop: post",
                          "monitor: will change at none", "monitor: will change at 45"));
  EXPECT_EQ(monitor->level(), 45);
  EXPECT_TRUE(monitor->isCharging());
}

TEST_F(BatteryMonitorTest, ToolGetsExactlyTwoArguments) {
  std::vector<std::string> given;
  desk.childProcesses.install(tool, [&](const std::vector<std::string>& arguments) {
    given = arguments;
    return std::optional<std::string>("");
  });
  makeAndRead();
  EXPECT_THAT(given, ElementsAre("-g", "accps"));
}

TEST_F(BatteryMonitorTest, LooksForTheGivenName) {
  desk.setBatteryReport("Jabra 45%; charging\nMouse 12%; discharging\n");
  const auto mouse = BatteryMonitor::make("Mouse");
  desk.loop.runUntilIdle();
  EXPECT_EQ(mouse->level(), 12);
}

TEST_F(BatteryMonitorTest, LevelIsPublishedAsRead) {
  desk.setBatteryReport("Jabra 9223372036854775807%; charging");
  makeAndRead();
  EXPECT_EQ(monitor->level(), 9223372036854775807);
}

TEST_F(BatteryMonitorTest, RefreshReturnsAtOnce) {
  makeAndRead();
  refresh();
  EXPECT_THAT(desk.journal.take(), ElementsAre("loop: utility"));
}

TEST_F(BatteryMonitorTest, CompletionIsCalledAfterBothMembersAreAssigned) {
  makeAndRead();
  desk.setBattery(45, "charging");
  refresh();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("monitor"),
              ElementsAre("will change at none", "will change at 45", "completion at 45 charging"));
}

TEST_F(BatteryMonitorTest, EachReadingIsAnnouncedTwiceEvenIfNothingChanged) {
  desk.setBattery(45, "charging");
  makeAndRead();
  refresh();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("monitor"),
              ElementsAre("will change at 45 charging", "will change at 45 charging",
                          "completion at 45 charging"));
}

TEST_F(BatteryMonitorTest, FailedReadingClearsBothMembers) {
  desk.setBattery(45, "charging");
  makeAndRead();
  desk.setBatteryReport("");
  refresh();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("monitor"),
              ElementsAre("will change at 45 charging", "will change at none charging",
                          "completion at none"));
}

TEST_F(BatteryMonitorTest, SecondFailedReadingIsAnnouncedAsWell) {
  makeAndRead();
  refresh();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("monitor"),
              ElementsAre("will change at none", "will change at none", "completion at none"));
}

TEST_F(BatteryMonitorTest, FailedLaunchIsAFailedReading) {
  desk.setBattery(45, "charging");
  makeAndRead();
  desk.childProcesses.uninstall(tool);
  refresh();
  desk.loop.runUntilIdle();
  EXPECT_THAT(
      desk.journal.take(),
      ElementsAre("loop: utility", "processes: 2 make", "processes: 2 executable /usr/bin/pmset",
                  "processes: 2 arguments -g accps", "processes: 2 launch -> false", "loop: post",
                  "monitor: will change at 45 charging", "monitor: will change at none charging",
                  "monitor: completion at none"));
}

TEST_F(BatteryMonitorTest, LogsNothing) {
  desk.setBattery(45);
  makeAndRead();
  desk.childProcesses.uninstall(tool);
  refresh();
  desk.advance(120s);
  EXPECT_THAT(desk.log.records(), IsEmpty());
}

// Polling

TEST_F(BatteryMonitorTest, ReadsAgainEvery60Seconds) {
  makeAndRead();
  desk.advance(59'999'999'999ns);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
  desk.advance(1ns);
  EXPECT_THAT(desk.journal.take("loop"), ElementsAre("utility", "post"));
  desk.advance(180s);
  EXPECT_THAT(desk.journal.take("loop"),
              ElementsAre("utility", "post", "utility", "post", "utility", "post"));
}

TEST_F(BatteryMonitorTest, PollingCallsNoCompletion) {
  makeAndRead();
  refresh();
  desk.advance(60s);
  Lines heard = desk.journal.take("monitor");
  EXPECT_EQ(std::count(heard.begin(), heard.end(), "completion at none"), 1);
}

// Overlapping readings

TEST_F(BatteryMonitorTest, OverlappingReadingsAreNotMerged) {
  makeAndRead();
  desk.loop.setUtilityLatency(90s);
  refresh();
  desk.advance(60s);
  EXPECT_EQ(desk.loop.waitingUtilityBlocks(), 2U);
  desk.advance(100s);
  EXPECT_THAT(desk.journal.take("processes"),
              testing::IsSupersetOf({"2 launch -> true", "3 launch -> true"}));
}

TEST_F(BatteryMonitorTest, LastReadingToFinishWins) {
  makeAndRead();
  desk.loop.holdUtilityQueue();
  refresh();
  refresh();
  desk.setBattery(20);
  desk.loop.releaseUtilityBlock(1);
  desk.loop.runUntilIdle();
  EXPECT_EQ(monitor->level(), 20);
  desk.setBattery(10);
  desk.loop.releaseUtilityBlock(0);
  desk.loop.runUntilIdle();
  EXPECT_EQ(monitor->level(), 10);
  EXPECT_THAT(desk.journal.take("monitor"),
              testing::IsSupersetOf({"completion at 20", "completion at 10"}));
}

TEST_F(BatteryMonitorTest, ToolThatHangsForAnHourHoldsTwoReadings) {
  desk.loop.holdUtilityQueue();
  make();
  desk.advance(3600s);
  EXPECT_EQ(desk.loop.waitingUtilityBlocks(), 2U);
  desk.setBattery(45);
  desk.loop.resumeUtilityQueue();
  desk.loop.runUntilIdle();
  EXPECT_EQ(monitor->level(), 45);
  Lines lines = desk.journal.take("processes");
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const auto& line) { return line.ends_with("launch -> true"); }),
            3);
}

TEST_F(BatteryMonitorTest, WaitingReadingStartsWhenOneEndsAndCallsEachCompletion) {
  makeAndRead();
  desk.loop.holdUtilityQueue();
  for (int i = 0; i < 4; ++i) refresh();
  EXPECT_EQ(desk.loop.waitingUtilityBlocks(), 2U);
  desk.setBattery(20);
  desk.loop.releaseUtilityBlock(0);
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.loop.waitingUtilityBlocks(), 2U);
  desk.setBattery(10);
  desk.loop.releaseUtilityBlock(1);
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.loop.waitingUtilityBlocks(), 1U);
  Lines heard = desk.journal.take("monitor");
  EXPECT_EQ(std::count(heard.begin(), heard.end(), "completion at 20"), 1);
  EXPECT_EQ(std::count(heard.begin(), heard.end(), "completion at 10"), 2);
}

TEST_F(BatteryMonitorTest, CompletionOfAWaitingReadingIsCalledOnce) {
  makeAndRead();
  for (int round = 0; round < 2; ++round) {
    desk.loop.holdUtilityQueue();
    for (int i = 0; i < 3; ++i) refresh();
    desk.loop.resumeUtilityQueue();
    desk.loop.runUntilIdle();
    Lines heard = desk.journal.take("monitor");
    EXPECT_EQ(std::count(heard.begin(), heard.end(), "completion at none"), 3);
  }
}

TEST_F(BatteryMonitorTest, WaitingReadingDoesNotOutliveTheMonitor) {
  makeAndRead();
  desk.loop.holdUtilityQueue();
  for (int i = 0; i < 3; ++i) refresh();
  release();
  desk.journal.take();
  desk.loop.resumeUtilityQueue();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("monitor"), IsEmpty());
  EXPECT_EQ(desk.loop.waitingUtilityBlocks(), 0U);
}

TEST_F(BatteryMonitorTest, CompletionMayStartAnotherReading) {
  makeAndRead();
  desk.setBattery(20);
  int completions = 0;
  monitor->refresh([&] {
    ++completions;
    monitor->refresh([&] { ++completions; });
  });
  desk.loop.runUntilIdle();
  EXPECT_EQ(completions, 2);
}

TEST_F(BatteryMonitorTest, WaitingReadingWaitsOnWhenACompletionStartsAnother) {
  makeAndRead();
  desk.loop.holdUtilityQueue();
  monitor->refresh([this] { refresh(); });
  refresh();
  refresh();
  desk.loop.releaseUtilityBlock(0);
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.loop.waitingUtilityBlocks(), 2U);
  desk.loop.resumeUtilityQueue();
  desk.loop.runUntilIdle();
  Lines lines = desk.journal.take();
  const auto count = [&lines](const char* part) {
    return std::count_if(lines.begin(), lines.end(), [part](const std::string& line) {
      return line.find(part) != std::string::npos;
    });
  };
  EXPECT_EQ(count("completion"), 3);
  // The reading that the completion started did not join the waiting one.
  EXPECT_EQ(count("launch -> true"), 4);
}

// Destruction

TEST_F(BatteryMonitorTest, ReadingInProgressKeepsAReleasedMonitorButPublishesNothing) {
  make();
  refresh();
  const std::weak_ptr<BatteryMonitor> alive = monitor;
  desk.journal.take();
  release();
  // The readings in progress keep it alive.
  EXPECT_FALSE(alive.expired());
  desk.loop.runUntilIdle();
  EXPECT_TRUE(alive.expired());
  EXPECT_THAT(desk.journal.take("processes"), testing::IsSupersetOf({"1 wait", "2 wait"}));
  EXPECT_THAT(desk.journal.take("monitor"), IsEmpty());
}

TEST_F(BatteryMonitorTest, MonitorReleasedDuringTheReadingIsDestroyedInTheBackground) {
  makeAndRead();
  const std::weak_ptr<BatteryMonitor> alive = monitor;
  bool aliveInside = false;
  desk.childProcesses.install(tool, [&](const auto&) {
    release();
    aliveInside = !alive.expired();
    return std::optional<std::string>("Jabra 45%; charging");
  });
  refresh();
  desk.loop.holdUtilityQueue();
  desk.loop.releaseUtilityBlock();
  EXPECT_TRUE(aliveInside);
  // Destroyed before the main thread would publish.
  EXPECT_TRUE(alive.expired());
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("monitor"), IsEmpty());
}

/// The desk's loop, except that the main thread runs a posted block at once, while the background
/// block that has posted it is still running.
class ImmediateMainLoop final : public MainLoop {
 public:
  explicit ImmediateMainLoop(MainLoop& real) : real_(real) {}

  void mainAsync(std::function<void()> block) override {
    block();
    ++posted;
  }

  Instant now() const override { return real_.now(); }
  bool isMainThread() const override { return real_.isMainThread(); }
  RegistrationToken scheduleRepeating(TimeInterval interval, std::function<void()> block) override {
    return real_.scheduleRepeating(interval, std::move(block));
  }
  void mainAsyncAfter(TimeInterval delay, const WorkItem& item) override {
    real_.mainAsyncAfter(delay, item);
  }
  void utilityAsync(std::function<void()> block) override { real_.utilityAsync(std::move(block)); }
  std::shared_ptr<void> beginActivity(const std::string& reason) override {
    return real_.beginActivity(reason);
  }
  int run() override { return real_.run(); }
  void terminate() override { real_.terminate(); }

  int posted = 0;

 private:
  MainLoop& real_;
};

TEST_F(BatteryMonitorTest, ReleasedMonitorPublishesNothingEvenIfThePostRunsAtOnce) {
  desk.close();
  ImmediateMainLoop immediate(desk.loop);
  const PlatformScope scope({immediate, desk.audio, desk.accessibility, desk.workspace,
                             desk.childProcesses, desk.notifications, desk.loginItem, desk.menuBar,
                             desk.log, desk.locale});
  auto released = BatteryMonitor::make("Jabra");
  bool completed = false;
  released->refresh([&completed] { completed = true; });
  released.reset();
  desk.loop.runUntilIdle();
  EXPECT_EQ(immediate.posted, 2);
  EXPECT_FALSE(completed);
}

TEST_F(BatteryMonitorTest, MonitorReleasedAfterTheReadingPublishesNothing) {
  makeAndRead();
  const std::weak_ptr<BatteryMonitor> alive = monitor;
  refresh();
  desk.loop.holdUtilityQueue();
  desk.loop.releaseUtilityBlock();
  release();
  // The hop to the main thread does not keep it alive.
  EXPECT_TRUE(alive.expired());
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take("monitor"), IsEmpty());
}

TEST_F(BatteryMonitorTest, MonitorReleasedInTheCompletionLivesUntilItReturns) {
  makeAndRead();
  const std::weak_ptr<BatteryMonitor> alive = monitor;
  bool aliveInside = false;
  monitor->refresh([&] {
    release();
    aliveInside = !alive.expired();
  });
  desk.loop.runUntilIdle();
  EXPECT_TRUE(aliveInside);
  EXPECT_TRUE(alive.expired());
}

TEST_F(BatteryMonitorTest, CompletionIsDestroyedAfterTheReading) {
  const auto held = std::make_shared<int>();
  makeAndRead();
  monitor->refresh([held] {});
  desk.loop.runUntilIdle();
  EXPECT_EQ(held.use_count(), 1);
  monitor->refresh([held] {});
  release();
  desk.loop.runUntilIdle();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(BatteryMonitorTest, TimerOfADestroyedMonitorStartsNoReading) {
  makeAndRead();
  release();
  desk.advance(300s);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

}  // namespace
}  // namespace hushbox
