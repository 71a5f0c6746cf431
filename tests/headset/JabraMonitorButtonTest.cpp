#include <gmock/gmock.h>

#include <limits>
#include <vector>

#include "tests/headset/JabraMonitorFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class JabraMonitorButtonTest : public JabraMonitorFixture {};

TEST_F(JabraMonitorButtonTest, EventsHaveTheExpectedOrdinals) {
  EXPECT_EQ(static_cast<int>(ButtonEvent::muted), 0);
  EXPECT_EQ(static_cast<int>(ButtonEvent::unmuted), 1);
  EXPECT_EQ(static_cast<int>(ButtonEvent::toggled), 2);
}

// A drop that stays

TEST_F(JabraMonitorButtonTest, DropThatStaysRaisesMutedAfterExactly300Milliseconds) {
  startWithSpeakerphone();
  setVolume(0);
  desk.advance(299'999'999ns);
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_EQ(monitor->isMuted(), false);
  desk.advance(1ns);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
  EXPECT_EQ(monitor->isMuted(), true);
  desk.advance(10s);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(JabraMonitorButtonTest, DropTakesItsStepsInOrder) {
  startWithSpeakerphone();
  setVolume(0);
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 input volume (4 bytes): 0 -> 0",
                          "log: jabra info: Jabra input volume 0.000000 -> muted=true "
                          "selfInitiated=false",
                          "loop: after 0.3 s"));
  desk.advance(300ms);
  // The volume is not read again, and nothing is logged.
  EXPECT_THAT(desk.journal.take(), ElementsAre("monitor: will change", "monitor: button muted"));
}

TEST_F(JabraMonitorButtonTest, StateIsMutedWhenMutedIsRaised) {
  startWithSpeakerphone();
  std::optional<bool> seen;
  monitor->onButton = [&](ButtonEvent) { seen = monitor->isMuted(); };
  setVolume(0);
  desk.advance(300ms);
  EXPECT_EQ(seen, true);
}

TEST_F(JabraMonitorButtonTest, DropInAnUnknownStateStaysUnknownForTheWindow) {
  startWithUnknownState();
  setVolume(0);
  desk.advance(299ms);
  EXPECT_EQ(monitor->isMuted(), std::nullopt);
  desk.advance(1ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
  EXPECT_EQ(monitor->isMuted(), true);
}

TEST_F(JabraMonitorButtonTest, SecondDropDoesNotRestartTheWindow) {
  startWithSpeakerphone();
  setVolume(0);
  desk.advance(200ms);
  announceVolume();
  desk.advance(99ms);
  EXPECT_THAT(takeEvents(), IsEmpty());
  desk.advance(1ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
  EXPECT_THAT(desk.journal.take("loop"), ElementsAre("after 0.3 s"));
  desk.advance(10s);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(JabraMonitorButtonTest, RepeatedZeroWhileMutedIsNotAPress) {
  startWithSpeakerphone(0);
  announceVolume();
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 input volume (4 bytes): 0 -> 0",
                          "log: jabra info: Jabra input volume 0.000000 -> muted=true "
                          "selfInitiated=false"));
  EXPECT_EQ(monitor->isMuted(), true);
}

// A drop that bounces

TEST_F(JabraMonitorButtonTest, BounceRaisesExactlyOneToggled) {
  startWithSpeakerphone();
  setVolume(0);
  desk.advance(100ms);
  setVolume(0.8F);
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 input volume (4 bytes): 0 -> 0",
                          "log: jabra info: Jabra input volume 0.000000 -> muted=true "
                          "selfInitiated=false",
                          "loop: after 0.3 s", "audio: get 2 input volume (4 bytes): 0.8 -> 0",
                          "log: jabra info: Jabra input volume 0.800000 -> muted=false "
                          "selfInitiated=false",
                          "log: jabra info: Mute bounced back (volume reset by host) -> toggle "
                          "press",
                          "monitor: button toggled"));
  EXPECT_EQ(monitor->isMuted(), false);
}

TEST_F(JabraMonitorButtonTest, BounceKeepsAnUnknownState) {
  startWithUnknownState();
  setVolume(0);
  setVolume(0.8F);
  desk.advance(10s);
  EXPECT_THAT(takeEvents(), ElementsAre("button toggled"));
  EXPECT_EQ(monitor->isMuted(), std::nullopt);
}

TEST_F(JabraMonitorButtonTest, BounceKeepsAMutedState) {
  startWithSpeakerphone();
  setVolume(0);
  // The next device is muted, so the state is muted while the mute is pending.
  desk.audio.unplug(speakerphone);
  speakerphone = desk.plugSpeakerphone(0);
  desk.loop.runUntilIdle();
  ASSERT_EQ(monitor->isMuted(), true);
  desk.journal.take();
  setVolume(0.5F);
  // The state is not assigned.
  EXPECT_THAT(desk.journal.take("monitor"), ElementsAre("button toggled"));
  EXPECT_EQ(monitor->isMuted(), true);
}

TEST_F(JabraMonitorButtonTest, BounceJustInsideTheWindowIsAToggle) {
  startWithSpeakerphone();
  setVolume(0);
  desk.advance(299'999'999ns);
  setVolume(0.8F);
  desk.advance(10s);
  EXPECT_THAT(takeEvents(), ElementsAre("button toggled"));
}

TEST_F(JabraMonitorButtonTest, ReturnAtTheEndOfTheWindowIsAMuteAndAnUnmute) {
  startWithSpeakerphone();
  setVolume(0);
  desk.advance(300ms);
  setVolume(0.8F);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted", "button unmuted"));
  EXPECT_EQ(monitor->isMuted(), false);
}

TEST_F(JabraMonitorButtonTest, DropAfterABounceStartsANewWindow) {
  startWithSpeakerphone();
  setVolume(0);
  desk.advance(200ms);
  setVolume(0.8F);
  setVolume(0);
  desk.advance(299ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button toggled"));
  desk.advance(1ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
}

TEST_F(JabraMonitorButtonTest, ProgramThatRestoresTheVolumeMakesEachPressAToggle) {
  startWithSpeakerphone();
  desk.audio.setPutsVolumeBackAfter(50ms);
  for (int press = 0; press < 3; ++press) {
    desk.audio.pressMuteButton(speakerphone);
    desk.advance(1s);
    EXPECT_THAT(takeEvents(), ElementsAre("button toggled"));
  }
}

// A volume above zero

TEST_F(JabraMonitorButtonTest, ReturnFromMutedRaisesUnmuted) {
  startWithSpeakerphone(0);
  setVolume(0.4F);
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 input volume (4 bytes): 0.4 -> 0",
                          "log: jabra info: Jabra input volume 0.400000 -> muted=false "
                          "selfInitiated=false",
                          "monitor: will change", "monitor: button unmuted"));
  EXPECT_EQ(monitor->isMuted(), false);
}

TEST_F(JabraMonitorButtonTest, StateIsUnmutedWhenUnmutedIsRaised) {
  startWithSpeakerphone(0);
  std::optional<bool> seen;
  monitor->onButton = [&](ButtonEvent) { seen = monitor->isMuted(); };
  setVolume(0.4F);
  EXPECT_EQ(seen, false);
}

TEST_F(JabraMonitorButtonTest, FirstVolumeAboveZeroInAnUnknownStateRaisesUnmuted) {
  startWithUnknownState();
  setVolume(0.5F);
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
  EXPECT_EQ(monitor->isMuted(), false);
}

TEST_F(JabraMonitorButtonTest, ChangeBetweenTwoLevelsAboveZeroIsStoredButIsNotAPress) {
  startWithSpeakerphone(0.8F);
  setVolume(0.5F);
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("audio: get 2 input volume (4 bytes): 0.5 -> 0",
                          "log: jabra info: Jabra input volume 0.500000 -> muted=false "
                          "selfInitiated=false"));
  EXPECT_EQ(monitor->isMuted(), false);
  setVolume(0);
  desk.advance(1s);
  desk.journal.take();
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("set 2 input volume (4 bytes): 0.5 -> 0"));
}

TEST_F(JabraMonitorButtonTest, AnyLevelAboveZeroIsUnmuted) {
  startWithSpeakerphone(0);
  setVolume(1e-30F);
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
  EXPECT_THAT(desk.log.texts("jabra"),
              testing::Contains("Jabra input volume 0.000000 -> muted=false selfInitiated=false"));
}

TEST_F(JabraMonitorButtonTest, LevelBelowZeroIsUnmutedAndNeverRestored) {
  startWithUnknownState(-0.5F);
  announceVolume();
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
  EXPECT_EQ(monitor->isMuted(), false);
  EXPECT_EQ(lastRecord(), "Jabra input volume -0.500000 -> muted=false selfInitiated=false");
  monitor->setMuted(true);
  desk.journal.take();
  monitor->setMuted(false);
  EXPECT_THAT(desk.journal.take("audio"), ElementsAre("set 2 input volume (4 bytes): 0.6 -> 0"));
}

TEST_F(JabraMonitorButtonTest, LevelThatIsNotANumberIsUnmuted) {
  startWithUnknownState(std::numeric_limits<float>::quiet_NaN());
  announceVolume();
  EXPECT_THAT(takeEvents(), ElementsAre("button unmuted"));
  EXPECT_THAT(lastRecord(), testing::EndsWith("-> muted=false selfInitiated=false"));
}

// What a callback or a subscriber finds. Listeners called from it see the state of that moment.

TEST_F(JabraMonitorButtonTest, NoMuteIsPendingWhenTheStateBecomesMuted) {
  startWithSpeakerphone();
  setVolume(0);
  subscription = monitor->objectWillChange.subscribe([this] {
    subscription = {};
    setVolumeAtOnce(0.8F);
  });
  desk.advance(300ms);
  // With a mute still pending it would be a bounce. The state was unmuted before.
  EXPECT_THAT(takeEvents(), ElementsAre("button muted", "button unmuted"));
}

TEST_F(JabraMonitorButtonTest, NoMuteIsPendingWhenMutedIsRaised) {
  startWithSpeakerphone();
  setVolume(0);
  monitor->onButton = [this](ButtonEvent event) {
    hear("button " + nameOf(event));
    if (event == ButtonEvent::muted) setVolumeAtOnce(0.8F);
  };
  desk.advance(300ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted", "button unmuted"));
}

TEST_F(JabraMonitorButtonTest, NoMuteIsPendingWhenToggledIsRaised) {
  startWithSpeakerphone();
  monitor->onButton = [this](ButtonEvent event) {
    hear("button " + nameOf(event));
    if (event != ButtonEvent::toggled) return;
    desk.audio.setAnnouncementDelay(1h);
    setVolumeAtOnce(0);
  };
  setVolume(0);
  setVolume(0.8F);
  desk.advance(299ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button toggled"));
  desk.advance(1ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
}

// Every transition

struct Transition {
  const char* name;
  /// unknown, false, true
  std::optional<bool> from;
  bool pending;
  float volume;
  std::optional<bool> to;
  Lines events;
};

void PrintTo(const Transition& row, std::ostream* out) {
  *out << row.name;
}

class JabraMonitorButtonTransitionTest : public JabraMonitorFixture,
                                         public testing::WithParamInterface<Transition> {};

TEST_P(JabraMonitorButtonTransitionTest, FollowsTheTable) {
  const Transition& row = GetParam();
  const bool startsAtZero = row.from == true;
  if (row.from) {
    startWithSpeakerphone(startsAtZero ? 0 : 0.8F);
  } else {
    startWithUnknownState();
  }
  if (row.pending) {
    setVolume(0);
    desk.advance(100ms);
    ASSERT_EQ(monitor->isMuted(), row.from);
  }
  desk.journal.take();
  if (desk.audio.inputVolume(speakerphone) == row.volume) {
    announceVolume();
  } else {
    setVolume(row.volume);
  }
  EXPECT_EQ(takeEvents(), row.events);
  EXPECT_EQ(monitor->isMuted(), row.to);
}

INSTANTIATE_TEST_SUITE_P(
    Table, JabraMonitorButtonTransitionTest,
    testing::Values(
        Transition{"UnknownDrops", std::nullopt, false, 0, std::nullopt, {}},
        Transition{"UnmutedDrops", false, false, 0, false, {}},
        Transition{"MutedStaysAtZero", true, false, 0, true, {}},
        Transition{"PendingStaysAtZero", false, true, 0, false, {}},
        Transition{"UnknownRises", std::nullopt, false, 0.5F, false, {"button unmuted"}},
        Transition{"UnmutedRises", false, false, 0.5F, false, {}},
        Transition{"MutedRises", true, false, 0.5F, false, {"button unmuted"}},
        Transition{"PendingFromUnmutedRises", false, true, 0.5F, false, {"button toggled"}},
        Transition{
            "PendingFromUnknownRises", std::nullopt, true, 0.5F, std::nullopt, {"button toggled"}}),
    [](const auto& info) { return info.param.name; });

// No callback, no device, no volume

TEST_F(JabraMonitorButtonTest, StateChangesWithoutACallback) {
  startWithSpeakerphone();
  monitor->onButton = nullptr;
  setVolume(0);
  desk.advance(300ms);
  EXPECT_EQ(monitor->isMuted(), true);
  setVolume(0.8F);
  EXPECT_EQ(monitor->isMuted(), false);
  setVolume(0);
  setVolume(0.8F);
  desk.advance(1s);
  EXPECT_EQ(monitor->isMuted(), false);
}

TEST_F(JabraMonitorButtonTest, UnreadableVolumeChangesAndLogsNothing) {
  startWithSpeakerphone();
  desk.audio.addFault({.status = audio::hardwareNotRunning});
  setVolume(0);
  desk.advance(1s);
  EXPECT_THAT(desk.journal.take(), ElementsAre("audio: get 2 input volume (4 bytes): -> stop"));
  EXPECT_EQ(monitor->isMuted(), false);
}

TEST_F(JabraMonitorButtonTest, UnreadableVolumeKeepsAPendingMute) {
  startWithSpeakerphone();
  setVolume(0);
  desk.audio.addFault({.status = audio::hardwareNotRunning});
  setVolume(0.8F);
  desk.advance(300ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
}

TEST_F(JabraMonitorButtonTest, LateNotificationOfAnUnpluggedDeviceReadsNothing) {
  startWithSpeakerphone();
  desk.audio.setAnnouncementDelay(1s);
  desk.audio.setInputVolume(speakerphone, 0);
  desk.audio.setAnnouncementDelay(0s);
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  ASSERT_EQ(monitor->deviceName(), std::nullopt);
  desk.journal.take();
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

TEST_F(JabraMonitorButtonTest, PendingMuteSurvivesUnplugging) {
  startWithSpeakerphone();
  setVolume(0);
  desk.advance(100ms);
  desk.audio.unplug(speakerphone);
  desk.advance(199ms);
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_EQ(monitor->isMuted(), std::nullopt);
  desk.advance(1ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
  EXPECT_EQ(monitor->isMuted(), true);
  EXPECT_EQ(monitor->deviceName(), std::nullopt);
}

TEST_F(JabraMonitorButtonTest, PendingMuteOfAnUnpluggedDeviceBouncesOnTheNextOne) {
  startWithSpeakerphone();
  setVolume(0);
  desk.audio.unplug(speakerphone);
  desk.loop.runUntilIdle();
  ASSERT_EQ(monitor->deviceName(), std::nullopt);
  speakerphone = desk.plugSpeakerphone(0.5F);
  desk.loop.runUntilIdle();
  setVolume(0.4F);
  EXPECT_THAT(takeEvents(), ElementsAre("button toggled"));
  desk.advance(10s);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(JabraMonitorButtonTest, PendingMuteSurvivesAChangeOfDevice) {
  startWithSpeakerphone();
  setVolume(0);
  desk.audio.unplug(speakerphone);
  speakerphone = desk.plugSpeakerphone(0.5F);
  desk.loop.runUntilIdle();
  ASSERT_EQ(monitor->isMuted(), false);
  setVolume(0.4F);
  EXPECT_THAT(takeEvents(), ElementsAre("button toggled"));
}

TEST_F(JabraMonitorButtonTest, PendingMuteOfTheFormerDeviceMutesTheNextOne) {
  startWithSpeakerphone();
  setVolume(0);
  desk.audio.unplug(speakerphone);
  speakerphone = desk.plugSpeakerphone(0.5F);
  desk.advance(299ms);
  ASSERT_EQ(monitor->isMuted(), false);
  EXPECT_THAT(takeEvents(), IsEmpty());
  desk.advance(1ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
  EXPECT_EQ(monitor->isMuted(), true);
}

TEST_F(JabraMonitorButtonTest, NextDeviceSetsTheStateWhileAMuteIsPending) {
  startWithSpeakerphone();
  setVolume(0);
  monitor->setMuted(true);
  ASSERT_EQ(monitor->isMuted(), true);
  desk.audio.plug({.name = "Jabra next", .inputVolume = 0.5F}, 0);
  desk.advance(299ms);
  EXPECT_EQ(monitor->isMuted(), false);
  EXPECT_THAT(takeEvents(), IsEmpty());
  desk.advance(1ms);
  EXPECT_EQ(monitor->isMuted(), true);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
}

TEST_F(JabraMonitorButtonTest, PendingMuteOfTheFormerDeviceIsRaisedOnAMutedOne) {
  startWithSpeakerphone();
  setVolume(0);
  desk.advance(100ms);
  desk.audio.plug({.name = "Jabra next", .inputVolume = 0.0F}, 0);
  desk.advance(199ms);
  ASSERT_EQ(monitor->isMuted(), true);
  EXPECT_THAT(takeEvents(), IsEmpty());
  desk.advance(1ms);
  EXPECT_THAT(takeEvents(), ElementsAre("button muted"));
  desk.advance(10s);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(JabraMonitorButtonTest, PendingMuteOfADestroyedMonitorDoesNothing) {
  startWithSpeakerphone();
  setVolume(0);
  release();
  desk.journal.take();
  desk.advance(1s);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

}  // namespace
}  // namespace hushbox
