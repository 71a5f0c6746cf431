#include <gmock/gmock.h>

#include "tests/headset/JabraMonitorFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class JabraMonitorSetMutedTest : public JabraMonitorFixture {};

// The write

TEST_F(JabraMonitorSetMutedTest, MutingTakesItsStepsInOrder) {
  startWithSpeakerphone(0.7F);
  monitor->setMuted(true);
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 input volume (4 bytes): 0.7 -> 0", "monitor: will change",
                          "audio: set 2 input volume (4 bytes): 0 -> 0",
                          "log: jabra info: Set Jabra input volume to 0.000000 (status 0)"));
  EXPECT_EQ(monitor->isMuted(), true);
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0);
}

TEST_F(JabraMonitorSetMutedTest, UnmutingTakesItsStepsInOrderWithoutReading) {
  startWithSpeakerphone(0);
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("monitor: will change", "audio: set 2 input volume (4 bytes): 0.6 -> 0",
                          "log: jabra info: Set Jabra input volume to 0.600000 (status 0)"));
  EXPECT_EQ(monitor->isMuted(), false);
}

TEST_F(JabraMonitorSetMutedTest, AnnouncesBeforeTheStateChanges) {
  startWithSpeakerphone();
  std::optional<std::optional<bool>> seen;
  subscription = monitor->objectWillChange.subscribe([&] { seen = monitor->isMuted(); });
  monitor->setMuted(true);
  EXPECT_EQ(seen, std::optional<bool>(false));
}

TEST_F(JabraMonitorSetMutedTest, DoesNothingIfTheDeviceIsKnownToBeInThatState) {
  startWithSpeakerphone(0.8F);
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
  monitor->setMuted(true);
  desk.journal.take();
  monitor->setMuted(true);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

TEST_F(JabraMonitorSetMutedTest, UnmutesInAnUnknownState) {
  startWithUnknownState(0.8F);
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("set 2 input volume (4 bytes): 0.6 -> 0"));
  EXPECT_EQ(monitor->isMuted(), false);
}

TEST_F(JabraMonitorSetMutedTest, MutesInAnUnknownState) {
  startWithUnknownState(0.8F);
  monitor->setMuted(true);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("get 2 input volume (4 bytes): 0.8 -> 0",
                                                      "set 2 input volume (4 bytes): 0 -> 0"));
  EXPECT_EQ(monitor->isMuted(), true);
}

TEST_F(JabraMonitorSetMutedTest, DoesNothingWithoutADevice) {
  start();
  desk.journal.take();
  monitor->setMuted(true);
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
  EXPECT_EQ(monitor->isMuted(), std::nullopt);
}

TEST_F(JabraMonitorSetMutedTest, CallWithoutADeviceStartsNoEchoWindow) {
  start();
  monitor->setMuted(true);
  speakerphone = desk.plugSpeakerphone(0);
  desk.loop.runUntilIdle();
  setVolume(0.8F);
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
}

TEST_F(JabraMonitorSetMutedTest, NeverRaisesAButtonEvent) {
  startWithSpeakerphone();
  for (const bool muted : {true, false, true}) {
    monitor->setMuted(muted);
    desk.advance(1s);
  }
  EXPECT_THAT(takeEvents(), IsEmpty());
}

// The level that unmuting writes

TEST_F(JabraMonitorSetMutedTest, UnmutingRestoresTheLevelReadWhenMuting) {
  startWithSpeakerphone(0.8F);
  desk.audio.setAnnouncementDelay(1h);
  desk.audio.setInputVolume(speakerphone, 0.7F);
  monitor->setMuted(true);
  desk.journal.take();
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("set 2 input volume (4 bytes): 0.7 -> 0"));
}

TEST_F(JabraMonitorSetMutedTest, UnmutingWritesSixTenthsIfNoLevelWasSeen) {
  startWithSpeakerphone(0);
  monitor->setMuted(false);
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0.6F);
}

TEST_F(JabraMonitorSetMutedTest, MutingAtZeroKeepsTheEarlierLevel) {
  startWithSpeakerphone(0.8F);
  // The mute is pending: the volume is zero, but the state is not muted yet.
  setVolume(0);
  desk.journal.take();
  monitor->setMuted(true);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("get 2 input volume (4 bytes): 0 -> 0",
                                                      "set 2 input volume (4 bytes): 0 -> 0"));
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("set 2 input volume (4 bytes): 0.8 -> 0"));
}

TEST_F(JabraMonitorSetMutedTest, MutingWithAnUnreadableVolumeWritesZeroAndKeepsTheEarlierLevel) {
  startWithSpeakerphone(0.8F);
  desk.audio.setAnnouncementDelay(1h);
  desk.audio.setInputVolume(speakerphone, 0.3F);
  desk.audio.addFault({.status = audio::hardwareNotRunning, .times = 1});
  monitor->setMuted(true);
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 input volume (4 bytes): -> stop", "monitor: will change",
                          "audio: set 2 input volume (4 bytes): 0 -> 0",
                          "log: jabra info: Set Jabra input volume to 0.000000 (status 0)"));
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("set 2 input volume (4 bytes): 0.8 -> 0"));
}

TEST_F(JabraMonitorSetMutedTest, ChangeInsideTheEchoWindowUpdatesTheLevel) {
  startWithSpeakerphone(0);
  monitor->setMuted(false);
  desk.advance(100ms);
  setVolume(0.4F);
  EXPECT_EQ(lastRecord(), "Jabra input volume 0.400000 -> muted=false selfInitiated=true");
  desk.audio.addFault({.status = audio::hardwareNotRunning, .times = 1});
  monitor->setMuted(true);
  desk.journal.take();
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("set 2 input volume (4 bytes): 0.4 -> 0"));
}

TEST_F(JabraMonitorSetMutedTest, LevelOfTheFormerDeviceIsRestoredOnAMutedOrUnreadableOne) {
  for (const bool isReadable : {true, false}) {
    SCOPED_TRACE(isReadable);
    startWithSpeakerphone(0.8F);
    desk.audio.unplug(speakerphone);
    desk.loop.runUntilIdle();
    if (!isReadable) desk.audio.addFault({.status = audio::hardwareNotRunning, .times = 1});
    speakerphone = desk.plugSpeakerphone(0);
    desk.loop.runUntilIdle();
    ASSERT_EQ(monitor->isMuted(), isReadable ? std::optional(true) : std::nullopt);
    monitor->setMuted(false);
    EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0.8F);
    release();
    desk.audio.unplug(speakerphone);
    desk.loop.runUntilIdle();
  }
}

// The echo of the write

TEST_F(JabraMonitorSetMutedTest, EchoOfItsOwnWriteIsLoggedAndIgnored) {
  startWithSpeakerphone(0.8F);
  monitor->setMuted(true);
  desk.journal.take();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 input volume (4 bytes): 0 -> 0",
                          "log: jabra info: Jabra input volume 0.000000 -> muted=true "
                          "selfInitiated=true"));
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

TEST_F(JabraMonitorSetMutedTest, EchoWindowEndsAt500Milliseconds) {
  for (const auto& [after, events] : {std::pair<TimeInterval, Lines>{490ms, {}},
                                      {499'999'999ns, {}},
                                      {500ms, {"button unmuted"}},
                                      {501ms, {"button unmuted"}}}) {
    startWithSpeakerphone(0.8F);
    monitor->setMuted(true);
    desk.loop.runUntilIdle();
    takeEvents();
    desk.advance(after);
    setVolume(0.8F);
    EXPECT_EQ(takeEvents(), events) << after.count() << " s";
    release();
    desk.audio.unplug(speakerphone);
    desk.loop.runUntilIdle();
  }
}

TEST_F(JabraMonitorSetMutedTest, EchoWindowOfAnUnmuteEndsAt500Milliseconds) {
  for (const auto& [after, events] :
       {std::pair<TimeInterval, Lines>{499'999'999ns, {}}, {500ms, {"button muted"}}}) {
    startWithSpeakerphone(0);
    monitor->setMuted(false);
    desk.loop.runUntilIdle();
    desk.advance(after);
    setVolume(0);
    desk.advance(300ms);
    EXPECT_EQ(takeEvents(), events) << after.count() << " s";
    release();
    desk.audio.unplug(speakerphone);
    desk.loop.runUntilIdle();
  }
}

TEST_F(JabraMonitorSetMutedTest, EachWriteStartsTheEchoWindowAgain) {
  startWithSpeakerphone(0.8F);
  monitor->setMuted(true);
  desk.advance(400ms);
  monitor->setMuted(false);
  desk.advance(499ms);
  setVolume(0.7F);
  EXPECT_EQ(lastRecord(), "Jabra input volume 0.700000 -> muted=false selfInitiated=true");
  desk.advance(1ms);
  setVolume(0.6F);
  EXPECT_EQ(lastRecord(), "Jabra input volume 0.600000 -> muted=false selfInitiated=false");
}

TEST_F(JabraMonitorSetMutedTest, DropInsideTheEchoWindowStartsNoPendingMute) {
  startWithSpeakerphone(0);
  monitor->setMuted(false);
  desk.loop.runUntilIdle();
  desk.advance(200ms);
  setVolume(0);
  desk.advance(10s);
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_THAT(desk.journal.take("loop"), IsEmpty());
  EXPECT_EQ(monitor->isMuted(), false);
}

TEST_F(JabraMonitorSetMutedTest, EchoWindowStartsBeforeTheAnnouncementAndTheWrite) {
  startWithSpeakerphone(0.8F);
  // The subscriber takes 200 ms; the window starts before it is called.
  subscription = monitor->objectWillChange.subscribe([&] { desk.loop.sleep(200ms); });
  monitor->setMuted(true);
  subscription = {};
  desk.loop.runUntilIdle();
  desk.advance(300ms);
  setVolume(0.8F);
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
}

TEST_F(JabraMonitorSetMutedTest, EchoWindowStartsAfterTheVolumeIsRead) {
  startWithSpeakerphone(0.8F);
  desk.audio.addFault({.times = 1, .duration = 200ms});
  monitor->setMuted(true);
  desk.loop.runUntilIdle();
  desk.advance(499ms);
  setVolume(0.8F);
  EXPECT_THAT(takeEvents(), IsEmpty());
  desk.advance(1ms);
  setVolume(0.7F);
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
}

TEST_F(JabraMonitorSetMutedTest, EchoWindowEndsWhileAChangedVolumeIsRead) {
  startWithSpeakerphone(0.8F);
  monitor->setMuted(true);
  desk.loop.runUntilIdle();
  desk.advance(400ms);
  desk.audio.addFault({.times = 1, .duration = 100ms});
  setVolume(0.8F);
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
}

TEST_F(JabraMonitorSetMutedTest, EchoWindowContinuesAcrossReplugging) {
  startWithSpeakerphone(0.8F);
  monitor->setMuted(true);
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  speakerphone = desk.plugSpeakerphone(0);
  desk.advance(499ms);
  takeEvents();
  setVolume(0.7F);
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_EQ(monitor->isMuted(), true);
  desk.advance(1ms);
  setVolume(0.8F);
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
}

TEST_F(JabraMonitorSetMutedTest, CallWithoutEffectStartsNoEchoWindow) {
  startWithSpeakerphone(0);
  monitor->setMuted(true);
  setVolume(0.8F);
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
}

// A failed write

TEST_F(JabraMonitorSetMutedTest, FailedWriteIsOnlyLogged) {
  startWithSpeakerphone(0.8F);
  desk.audio.addFault({.operation = AudioOperation::setPropertyData, .status = -50});
  monitor->setMuted(true);
  EXPECT_EQ(lastRecord(), "Set Jabra input volume to 0.000000 (status -50)");
  EXPECT_EQ(monitor->isMuted(), true);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("get 2 input volume (4 bytes): 0.8 -> 0",
                                                      "set 2 input volume (4 bytes): 0 -> -50"));
  desk.journal.take();
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

TEST_F(JabraMonitorSetMutedTest, FailedWriteStartsAnEchoWindow) {
  startWithSpeakerphone(0.8F);
  desk.audio.addFault({.operation = AudioOperation::setPropertyData, .status = -50});
  monitor->setMuted(true);
  setVolume(0.7F);
  EXPECT_THAT(takeEvents(), IsEmpty());
  desk.advance(500ms);
  setVolume(0.8F);
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
}

// A pending mute

TEST_F(JabraMonitorSetMutedTest, MutingDoesNotCancelAPendingMute) {
  startWithSpeakerphone(0.8F);
  setVolume(0);
  desk.advance(100ms);
  monitor->setMuted(true);
  announceVolume();
  EXPECT_EQ(lastRecord(), "Jabra input volume 0.000000 -> muted=true selfInitiated=true");
  desk.journal.take();
  desk.advance(199ms);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
  desk.advance(1ms);
  EXPECT_THAT(desk.journal.take(), ElementsAre("monitor: will change", "monitor: button muted"));
  EXPECT_EQ(monitor->isMuted(), true);
}

TEST_F(JabraMonitorSetMutedTest, UnmutingDoesNotCancelAPendingMute) {
  startWithUnknownState(0.8F);
  setVolume(0);
  desk.advance(100ms);
  monitor->setMuted(false);
  desk.loop.runUntilIdle();
  ASSERT_EQ(desk.audio.inputVolume(speakerphone), 0.6F);
  EXPECT_THAT(takeEvents(), IsEmpty());
  desk.advance(200ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
  EXPECT_EQ(monitor->isMuted(), true);
}

TEST_F(JabraMonitorSetMutedTest, CallWithoutEffectDoesNotCancelAPendingMute) {
  startWithSpeakerphone(0.8F);
  setVolume(0);
  monitor->setMuted(false);
  desk.advance(300ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
}

TEST_F(JabraMonitorSetMutedTest, MayBeCalledFromTheButtonCallback) {
  startWithSpeakerphone(0.8F);
  monitor->onButton = [&](ButtonEvent) { monitor->setMuted(false); };
  setVolume(0);
  desk.advance(300ms);
  EXPECT_EQ(monitor->isMuted(), false);
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0.8F);
}

}  // namespace
}  // namespace hushbox
