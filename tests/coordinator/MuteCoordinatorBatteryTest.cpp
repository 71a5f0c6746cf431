#include <gmock/gmock.h>

#include <string>

#include "tests/coordinator/MuteCoordinatorFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* noStatus = "Waiting for Jabra button…";

class MuteCoordinatorBatteryTest : public MuteCoordinatorFixture {
 protected:
  /// Starts with a good battery and then a call, at whose start the tool prints `report`.
  void startCallWith(const std::string& report) {
    desk.setBattery(90);
    startWithSpeakerphone();
    desk.setBatteryReport(report);
    setInCall(true);
  }
};

TEST_F(MuteCoordinatorBatteryTest, WarningTakesItsStepsInOrder) {
  startCallWith("Jabra 29%; discharging");
  EXPECT_THAT(
      desk.journal.take(),
      ElementsAre("audio: get 2 running (4 bytes): 1 -> 0", "coordinator: will change",
                  "log: jabra info: Jabra mic in use -> true", "loop: utility", "processes: 2 make",
                  "processes: 2 executable /usr/bin/pmset", "processes: 2 arguments -g accps",
                  "processes: 2 launch -> true", "processes: 2 read 22 bytes", "processes: 2 wait",
                  "loop: post", "coordinator: will change", "coordinator: will change",
                  "notifications: add \"Jabra battery low: 29%\" \"Your Speak2 75 is under 30%. "
                  "Plug it in before the call runs long.\" with sound",
                  "log: coordinator info: Call started — battery 29%, notified",
                  "coordinator: will change"));
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Call started — battery 29%, notified");
}

TEST_F(MuteCoordinatorBatteryTest, WarnsOnlyBelow30Percent) {
  struct Case {
    const char* report;
    const char* title;
    const char* status;
  };
  for (const Case& one : {Case{"Jabra 0%; discharging", "Jabra battery low: 0%",
                               "10:42  Call started — battery 0%, notified"},
                          {"Jabra 5%; discharging", "Jabra battery low: 5%",
                           "10:42  Call started — battery 5%, notified"},
                          {"Jabra 029%; finishing", "Jabra battery low: 29%",
                           "10:42  Call started — battery 29%, notified"},
                          {"Jabra 30%; discharging", nullptr, noStatus},
                          {"Jabra 31%; discharging", nullptr, noStatus},
                          {"Jabra 250%; discharging", nullptr, noStatus},
                          {"Jabra 29%; charging", nullptr, noStatus},
                          {"Jabra 5%; AC attached", nullptr, noStatus},
                          {"Jabra 0%; charged", nullptr, noStatus},
                          {"Jabra 29 %; discharging", nullptr, noStatus},
                          {"", nullptr, noStatus}}) {
    SCOPED_TRACE(one.report);
    const std::size_t before = desk.notifications.requests().size();
    const std::size_t records = desk.log.texts("coordinator").size();
    startCallWith(one.report);
    const auto& requests = desk.notifications.requests();
    ASSERT_EQ(requests.size(), before + (one.title ? 1 : 0));
    EXPECT_EQ(desk.log.texts("coordinator").size(), records + (one.title ? 1 : 0));
    if (one.title) {
      EXPECT_EQ(requests.back().title, one.title);
      EXPECT_EQ(requests.back().body,
                "Your Speak2 75 is under 30%. Plug it in before the call runs long.");
    }
    EXPECT_EQ(coordinator->lastEvent(), one.status);
    release();
    desk.audio.unplug(speakerphone);
    desk.loop.runUntilIdle();
  }
}

TEST_F(MuteCoordinatorBatteryTest, FailedLaunchOfTheToolCausesNoWarning) {
  desk.setBattery(5);
  startWithSpeakerphone();
  desk.childProcesses.uninstall("/usr/bin/pmset");
  setInCall(true);
  EXPECT_THAT(desk.notifications.requests(), IsEmpty());
  EXPECT_EQ(coordinator->lastEvent(), noStatus);
}

TEST_F(MuteCoordinatorBatteryTest, EveryCallStartReadsTheBattery) {
  startWithSpeakerphone();
  for (const bool inCall : {true, false, true, false}) {
    desk.journal.take();
    setInCall(inCall);
    EXPECT_EQ(desk.journal.take("processes").size(), inCall ? 6U : 0U);
  }
}

TEST_F(MuteCoordinatorBatteryTest, EveryCallStartOnALowBatteryWarnsAgain) {
  startCallWith("Jabra 29%; discharging");
  setInCall(false);
  desk.setBattery(28);
  setInCall(true);
  ASSERT_EQ(desk.notifications.requests().size(), 2U);
  EXPECT_EQ(desk.notifications.requests()[1].title, "Jabra battery low: 28%");
}

TEST_F(MuteCoordinatorBatteryTest, PollingTheBatteryNeverWarns) {
  desk.setBattery(5);
  startWithSpeakerphone();
  desk.advance(300s);
  EXPECT_THAT(desk.notifications.requests(), IsEmpty());
}

TEST_F(MuteCoordinatorBatteryTest, WarnsWhenTheReadingArrivesHoweverLongItTakes) {
  desk.setBattery(90);
  startWithSpeakerphone();
  desk.loop.setUtilityLatency(8s);
  desk.setBattery(12);
  setInCall(true);
  desk.advance(7s);
  EXPECT_THAT(desk.notifications.requests(), IsEmpty());
  desk.advance(1s);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Call started — battery 12%, notified");
}

TEST_F(MuteCoordinatorBatteryTest, WarnsEvenIfTheHeadsetWasUnpluggedMeanwhile) {
  desk.setBattery(90);
  startWithSpeakerphone();
  desk.loop.setUtilityLatency(8s);
  desk.setBattery(12);
  setInCall(true);
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  ASSERT_FALSE(coordinator->jabra().isInCall());
  desk.advance(8s);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Call started — battery 12%, notified");
}

TEST_F(MuteCoordinatorBatteryTest, FailedNotificationIsOnlyLogged) {
  desk.notifications.setAddError("The daemon is away");
  startCallWith("Jabra 29%; discharging");
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Call started — battery 29%, notified");
  EXPECT_THAT(desk.log.texts("notify"), testing::Contains("Notification failed: The daemon is "
                                                          "away"));
}

TEST_F(MuteCoordinatorBatteryTest, DestroyedCoordinatorDoesNotWarn) {
  desk.setBattery(5);
  startWithSpeakerphone();
  desk.loop.holdUtilityQueue();
  setInCall(true);
  // Finish the reading first, so that only its completion is left.
  desk.loop.releaseUtilityBlock();
  release();
  desk.journal.take();
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

}  // namespace
}  // namespace hushbox
