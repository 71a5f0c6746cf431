#include "platform/simulated/SimulatedDesk.h"

#include <gmock/gmock.h>

#include "support/ChangePublisher.h"
#include "support/Log.h"
#include "tests/platform/simulated/CaughtViolations.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The check at the end of a desk: whatever is still in place must do nothing.
class SimulatedDeskTest : public testing::Test {
 protected:
  void callPlatform() { platform().workspace.runningApplications(); }

  testing::Matcher<std::vector<std::string>> oneViolation(const std::string& about) {
    return ElementsAre(HasSubstr(about));
  }

  CaughtViolations caught;
  SimulatedDesk desk;
};

TEST_F(SimulatedDeskTest, IsThePlatformInScope) {
  EXPECT_EQ(&platform().mainLoop, &desk.loop);
  EXPECT_EQ(&platform().audio, &desk.audio);
  EXPECT_EQ(&platform().accessibility, &desk.accessibility);
  EXPECT_EQ(&platform().workspace, &desk.workspace);
  EXPECT_EQ(&platform().childProcesses, &desk.childProcesses);
  EXPECT_EQ(&platform().notifications, &desk.notifications);
  EXPECT_EQ(&platform().loginItem, &desk.loginItem);
  EXPECT_EQ(&platform().menuBar, &desk.menuBar);
  EXPECT_EQ(&platform().log, &desk.log);
  EXPECT_EQ(&platform().locale, &desk.locale);
}

TEST_F(SimulatedDeskTest, HasASpeakerphoneAndABatteryReportOnRequest) {
  const AudioObjectID speakerphone = desk.plugSpeakerphone(0.7F);
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0.7F);
  const auto report = [&] {
    const auto child = desk.childProcesses.make();
    child->setExecutablePath("/usr/bin/pmset");
    child->setArguments({"-g", "accps"});
    EXPECT_TRUE(child->launch());
    return child->readDataToEndOfFile();
  };
  EXPECT_THAT(report(), testing::Not(HasSubstr("Jabra")));
  desk.setBattery(29, "charging");
  EXPECT_THAT(report(), AllOf(HasSubstr("Jabra"), HasSubstr("29%; charging;")));
}

TEST_F(SimulatedDeskTest, ClosesWithoutViolationIfNothingHappens) {
  const AudioObjectID speakerphone = desk.plugSpeakerphone();
  int fired = 0;
  const auto fire = [&] { ++fired; };
  desk.loop.scheduleRepeating(60s, fire);
  desk.loop.mainAsyncAfter(1s, WorkItem(fire));
  desk.loop.mainAsync(fire);
  desk.audio.addPropertyListener(speakerphone, audio::inputVolume, fire);
  desk.notifications.add({}, [&](const auto&) { fire(); });
  desk.menuBar.setRows({{.kind = MenuRow::Kind::button, .enabled = true, .action = fire}});
  desk.loop.utilityAsync([&] { desk.loop.mainAsync(fire); });
  desk.loop.after(1s, [] { FAIL() << "Events of the environment are dropped at the end."; });
  desk.close();
  EXPECT_EQ(fired, 7);
  EXPECT_THAT(caught.messages(), IsEmpty());
  desk.close();
  EXPECT_EQ(fired, 7);
}

TEST_F(SimulatedDeskTest, TimerThatCallsThePlatformIsAViolation) {
  desk.loop.scheduleRepeating(60s, [&] { callPlatform(); });
  desk.close();
  EXPECT_THAT(caught.messages(), ElementsAre(AllOf(HasSubstr("from the main loop"),
                                                   HasSubstr("workspace: applications:"))));
}

TEST_F(SimulatedDeskTest, DelayedItemThatReadsTheClockIsAViolation) {
  desk.loop.mainAsyncAfter(60s, WorkItem([&] { desk.loop.now(); }));
  desk.close();
  EXPECT_THAT(caught.messages(), oneViolation("from the main loop"));
}

TEST_F(SimulatedDeskTest, PostedBlockThatPostsAnotherIsAViolation) {
  desk.loop.mainAsync([&] { desk.loop.mainAsync([] {}); });
  desk.close();
  EXPECT_THAT(caught.messages(), oneViolation("from the main loop"));
}

TEST_F(SimulatedDeskTest, ListenerThatCallsThePlatformIsAViolation) {
  desk.audio.addPropertyListener(audio::systemObject, audio::deviceList, [&] { callPlatform(); });
  desk.close();
  EXPECT_THAT(caught.messages(), oneViolation("from a listener"));
}

TEST_F(SimulatedDeskTest, QueuedCallOfARemovedListenerIsAViolation) {
  const AudioObjectID speakerphone = desk.plugSpeakerphone();
  auto listener =
      desk.audio.addPropertyListener(speakerphone, audio::inputVolume, [&] { callPlatform(); });
  desk.audio.setInputVolume(speakerphone, 0);
  desk.audio.removePropertyListener(speakerphone, audio::inputVolume, std::move(listener));
  desk.close();
  EXPECT_THAT(caught.messages(), oneViolation("from the main loop"));
}

TEST_F(SimulatedDeskTest, MenuRowThatCallsThePlatformIsAViolation) {
  MenuRow row{.kind = MenuRow::Kind::button, .enabled = true};
  row.action = [&] { desk.loop.terminate(); };
  desk.menuBar.setRows({row});
  row.action = [&] { callPlatform(); };
  desk.menuBar.setRows({row});
  desk.close();
  EXPECT_THAT(caught.messages(), oneViolation("from a menu"));
}

TEST_F(SimulatedDeskTest, MenuRowMayQuit) {
  desk.menuBar.setRows(
      {{.kind = MenuRow::Kind::button, .enabled = true, .action = [&] { desk.loop.terminate(); }}});
  desk.close();
  EXPECT_THAT(caught.messages(), IsEmpty());
}

TEST_F(SimulatedDeskTest, CompletionMayLog) {
  desk.notifications.add({}, [](const auto&) { Log("notify").info("late"); });
  desk.close();
  EXPECT_THAT(caught.messages(), IsEmpty());
  EXPECT_EQ(desk.log.texts("notify"), Lines{"late"});
}

TEST_F(SimulatedDeskTest, CompletionThatCallsThePlatformIsAViolation) {
  desk.notifications.setAnswers(SimulatedUserNotifications::Answers::whenAsked);
  desk.notifications.add({}, [&](const auto&) { desk.locale.shortTime(); });
  desk.close();
  EXPECT_THAT(caught.messages(), testing::Contains(HasSubstr("from a completion")));
}

TEST_F(SimulatedDeskTest, BackgroundBlocksFinishButTheirHopsAreChecked) {
  desk.loop.holdUtilityQueue();
  desk.loop.utilityAsync([&] {
    desk.childProcesses.make();
    desk.loop.mainAsync([&] { callPlatform(); });
  });
  desk.close();
  EXPECT_THAT(desk.journal.lines("processes"), ElementsAre("1 make"));
  EXPECT_THAT(caught.messages(), oneViolation("from the main loop"));
}

TEST_F(SimulatedDeskTest, AnnouncementIsAViolation) {
  ChangePublisher publisher;
  desk.loop.scheduleRepeating(60s, [&] { publisher.send(); });
  desk.close();
  EXPECT_THAT(caught.messages(), oneViolation("an announcement"));
}

TEST_F(SimulatedDeskTest, RemainingSubscriberIsAViolation) {
  ChangePublisher publisher;
  const Subscription subscription = publisher.subscribe([] {});
  desk.close();
  EXPECT_THAT(caught.messages(), oneViolation("a subscriber"));
}

TEST_F(SimulatedDeskTest, NextDeskIsAnotherPlatform) {
  desk.close();
  const SimulatedDesk other;
  EXPECT_EQ(&platform().mainLoop, &other.loop);
}

}  // namespace
}  // namespace hushbox
