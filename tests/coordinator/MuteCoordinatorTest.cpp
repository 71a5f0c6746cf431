#include <gmock/gmock.h>

#include <optional>
#include <string>

#include "app/LuchadorArt.h"
#include "platform/simulated/RecordingCanvas.h"
#include "tests/coordinator/MuteCoordinatorFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class MuteCoordinatorTest : public MuteCoordinatorFixture {
 protected:
  void expectIcon(bool muted, bool connected, std::optional<Color> tint) const {
    const Image icon = coordinator->menuBarIcon();
    const Image expected = LuchadorArt::menuBarImage(muted, connected, tint);
    RecordingCanvas drawn;
    RecordingCanvas wanted;
    icon.draw(&drawn);
    expected.draw(&wanted);
    EXPECT_EQ(drawn.lines(), wanted.lines());
    EXPECT_EQ(icon.isTemplate, expected.isTemplate);
    EXPECT_EQ(icon.width, 18);
  }
};

// The start

TEST_F(MuteCoordinatorTest, StartTakesItsStepsInOrder) {
  desk.plugSpeakerphone();
  start();
  EXPECT_THAT(
      desk.journal.take(),
      ElementsAre(
          "audio: add listener 1 device list -> added", "audio: size 1 device list: 4 bytes -> 0",
          "audio: get 1 device list (4 bytes): 2 -> 0",
          "audio: text 2 name: \"Jabra Speak2 75\" -> 0", "audio: has 2 input volume: true",
          "audio: text 2 name: \"Jabra Speak2 75\" -> 0",
          "audio: get 2 input volume (4 bytes): 0.8 -> 0",
          "audio: add listener 2 input volume -> added", "audio: get 2 running (4 bytes): 0 -> 0",
          "audio: add listener 2 running -> added",
          "log: jabra info: Attached to Jabra Speak2 75 (id 2)", "loop: utility",
          "loop: repeat every 60 s", "notifications: request authorization 6",
          "loop: repeat every 1 s"));
}

TEST_F(MuteCoordinatorTest, InitiallyWaitsForTheButton) {
  startWithSpeakerphone();
  EXPECT_EQ(coordinator->lastEvent(), "Waiting for Jabra button…");
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
  EXPECT_THAT(desk.log.texts("coordinator"), IsEmpty());
}

TEST_F(MuteCoordinatorTest, OwnsBothMonitors) {
  desk.setBattery(62);
  startWithSpeakerphone();
  EXPECT_EQ(coordinator->jabra().deviceName(), "Jabra Speak2 75");
  EXPECT_EQ(coordinator->battery().level(), 62);
}

TEST_F(MuteCoordinatorTest, BatteryIsTheOneNamedJabra) {
  desk.setBatteryReport(
      " -Jab 5%; discharging\n -JABRA 6%; discharging\n -Jabra Link 62%; discharging\n"
      " -Jabra Speak2 75 63%; discharging");
  startWithSpeakerphone();
  EXPECT_EQ(coordinator->battery().level(), 62);
}

TEST_F(MuteCoordinatorTest, CallInProgressAtTheStartIsNotACallStart) {
  desk.setBattery(5);
  desk.audio.plug({.name = "Jabra Speak2 75", .inputVolume = 0.8F, .running = 1});
  start();
  desk.advance(10s);
  EXPECT_THAT(desk.notifications.requests(), IsEmpty());
}

TEST_F(MuteCoordinatorTest, FirstPollIsOneSecondAfterTheStart) {
  desk.audio.plug({.name = "Jabra Speak2 75", .inputVolume = 0.8F, .running = 1});
  desk.teams.joinMeeting(false);
  start();
  desk.advance(999'999'999ns);
  EXPECT_EQ(takeTeamsCalls(), 0U);
  desk.advance(1ns);
  EXPECT_EQ(takeTeamsCalls(), 1U);
}

// Am I muted?

TEST_F(MuteCoordinatorTest, IsMutedFollowsTheHeadsetUntilTeamsIsKnown) {
  start();
  EXPECT_FALSE(coordinator->isMuted());
  speakerphone = desk.plugSpeakerphone(0);
  desk.loop.runUntilIdle();
  EXPECT_TRUE(coordinator->isMuted());
  setVolume(0.8F);
  EXPECT_FALSE(coordinator->isMuted());
}

TEST_F(MuteCoordinatorTest, IsMutedIsFalseWhileNothingIsKnown) {
  desk.audio.addFault({.status = audio::hardwareNotRunning, .times = 1});
  startWithSpeakerphone(0);
  EXPECT_EQ(coordinator->jabra().isMuted(), std::nullopt);
  EXPECT_FALSE(coordinator->isMuted());
}

TEST_F(MuteCoordinatorTest, TeamsStateTakesPrecedenceOverTheHeadsets) {
  startCall(0.8F, false);
  desk.advance(1s);
  muteOnlyTheHeadset();
  EXPECT_EQ(coordinator->jabra().isMuted(), true);
  EXPECT_EQ(coordinator->teamsMuted(), false);
  EXPECT_FALSE(coordinator->isMuted());
}

// The icon

TEST_F(MuteCoordinatorTest, IconIsFaintWithoutTheHeadset) {
  start();
  expectIcon(false, false, std::nullopt);
}

TEST_F(MuteCoordinatorTest, IconHasNoTintOutsideACall) {
  startWithSpeakerphone(0.8F);
  expectIcon(false, true, std::nullopt);
  press(ButtonEvent::muted);
  expectIcon(true, true, std::nullopt);
}

TEST_F(MuteCoordinatorTest, IconIsGreenOrRedDuringACall) {
  startWithSpeakerphone(0.8F);
  setInCall(true);
  expectIcon(false, true, Color::systemGreen);
  press(ButtonEvent::muted);
  expectIcon(true, true, Color::systemRed);
  setInCall(false);
  expectIcon(true, true, std::nullopt);
}

TEST_F(MuteCoordinatorTest, IconShowsTeamsStateRatherThanTheHeadsets) {
  startCall(0.8F, false);
  desk.advance(1s);
  muteOnlyTheHeadset();
  ASSERT_EQ(coordinator->jabra().isMuted(), true);
  expectIcon(false, true, Color::systemGreen);
}

TEST_F(MuteCoordinatorTest, IconOfAHeadsetWithAnEmptyNameIsNotFaint) {
  desk.makeNameReadableOnce();
  startWithSpeakerphone(0.8F);
  ASSERT_EQ(coordinator->jabra().deviceName(), "");
  expectIcon(false, true, std::nullopt);
}

TEST_F(MuteCoordinatorTest, IconOfAnUnpluggedHeadsetHasNoTint) {
  startWithSpeakerphone(0);
  setInCall(true);
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  expectIcon(false, false, std::nullopt);
}

// Announcements

TEST_F(MuteCoordinatorTest, AnnouncesChangesOfTheHeadset) {
  start();
  desk.loop.runUntilIdle();
  takeAnnouncements();
  speakerphone = desk.plugSpeakerphone();
  desk.loop.runUntilIdle();
  // Name, mute state, call.
  EXPECT_EQ(takeAnnouncements(), 3U);
  setInCall(true);
  // The call, and the two members of the battery, which is read at the start of a call.
  EXPECT_EQ(takeAnnouncements(), 3U);
}

TEST_F(MuteCoordinatorTest, AnnouncesChangesOfTheBattery) {
  start();
  desk.journal.take();
  desk.loop.runUntilIdle();
  EXPECT_EQ(takeAnnouncements(), 2U);
}

TEST_F(MuteCoordinatorTest, AnnouncesBeforeEachChange) {
  startWithSpeakerphone();
  desk.teams.joinMeeting(false);
  Lines seen;
  subscription = coordinator->objectWillChange.subscribe([&] {
    seen.push_back(coordinator->lastEvent() + ", Teams " +
                   (coordinator->teamsMuted() ? "known" : "unknown") + ", headset " +
                   (coordinator->jabra().isMuted() == true ? "muted" : "not muted"));
  });
  press(ButtonEvent::muted);
  EXPECT_THAT(seen, ElementsAre("Waiting for Jabra button…, Teams unknown, headset not muted",
                                "Waiting for Jabra button…, Teams unknown, headset muted",
                                "Waiting for Jabra button…, Teams known, headset muted"));
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Mute → Teams");
}

// Destruction

TEST_F(MuteCoordinatorTest, RemainingTimersAndListenersDoNothing) {
  startWithSpeakerphone();
  desk.teams.joinMeeting(false);
  setInCall(true);
  desk.advance(2s);
  release();
  EXPECT_EQ(desk.audio.listenerCount(), 3U);
  desk.journal.take();
  const std::size_t announcements = ChangePublisher::announcementCount();
  desk.audio.setInputVolume(speakerphone, 0);
  desk.audio.setRunning(speakerphone, false);
  desk.teams.setMuted(true);
  desk.advance(200s);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
  EXPECT_EQ(ChangePublisher::announcementCount(), announcements);
}

TEST_F(MuteCoordinatorTest, DestructionLeavesNoSubscriber) {
  const std::size_t before = ChangePublisher::subscriberCount();
  startWithSpeakerphone();
  EXPECT_GT(ChangePublisher::subscriberCount(), before);
  release();
  EXPECT_EQ(ChangePublisher::subscriberCount(), before);
}

}  // namespace
}  // namespace hushbox
