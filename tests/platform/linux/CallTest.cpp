// Calls on real servers, from the press of the speakerphone's button to Teams and back.

#include <algorithm>

#include "tests/platform/linux/fixtures/CallFixture.h"

#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

using rehearsal::AudioFlavour;
using rehearsal::letPass;
using rehearsal::Milliseconds;
using rehearsal::serverTimeout;
using rehearsal::waitUntil;
using Clock = std::chrono::system_clock;

constexpr Milliseconds bounceWindow{300};
/// Longer than the poll interval: by then an echo would have had its effect.
constexpr Milliseconds pollAndMore{1500};

class CallTest : public CallFixture {
 protected:
  void SetUp() override { setUpDesk(AudioFlavour::PulseAudio); }
};

/// The tests that depend on the sound server, on each server.
class CallOnEitherServerTest : public CallFixture,
                               public testing::WithParamInterface<AudioFlavour> {
 protected:
  void SetUp() override { setUpDesk(GetParam()); }
};

// In sequence, so that each server needs only one desk.
INSTANTIATE_TEST_SUITE_P(PulseAudio, CallOnEitherServerTest,
                         testing::Values(AudioFlavour::PulseAudio));
INSTANTIATE_TEST_SUITE_P(PipeWire, CallOnEitherServerTest, testing::Values(AudioFlavour::PipeWire));

TEST_P(CallOnEitherServerTest, VolumeThatStaysAtZeroMutesTeamsAfterTheBounceWindow) {
  const auto drop = Clock::now();
  sound().setVolume(0.0);
  meeting->waitForMuted(true);
  program->waitForNote("Mute → Teams");
  ASSERT_EQ(meeting->presses().size(), 1U);
  EXPECT_GE(meeting->presses().front() - drop, bounceWindow);
  EXPECT_EQ(coordinator().teamsMuted(), true);
}

TEST_P(CallOnEitherServerTest, ReturnOfTheVolumeUnmutesTeams) {
  sound().setVolume(0.0);
  meeting->waitForMuted(true);
  sound().setVolume(1.0);
  meeting->waitForMuted(false);
  program->waitForNote("Unmute → Teams");
  EXPECT_EQ(meeting->presses().size(), 2U);
}

TEST_P(CallOnEitherServerTest, VolumeRestoredWithinTheWindowPressesOnce) {
  sound().setVolume(0.0);
  letPass(Milliseconds{100});
  sound().setVolume(1.0);
  program->waitForNote("Toggle → Teams");
  letPass(pollAndMore);
  EXPECT_EQ(meeting->presses().size(), 1U);
  EXPECT_TRUE(meeting->isMuted());
}

TEST_P(CallOnEitherServerTest, ButtonThatMovesTheMuteSwitchIsAPressToo) {
  sound().setMuteSwitch(true);
  meeting->waitForMuted(true);
  sound().setMuteSwitch(false);
  meeting->waitForMuted(false);
  EXPECT_EQ(meeting->presses().size(), 2U);
}

TEST_P(CallOnEitherServerTest, SpeakerphoneFollowsAChangeMadeInTeamsWithoutAnEcho) {
  sound().setVolume(0.7);
  letPass(Milliseconds{200});
  meeting->clickMicrophone();
  waitUntil([this] { return sound().volume() == 0.0; }, serverTimeout, "the speakerphone to mute");
  program->waitForNote("Teams muted → Jabra");
  letPass(pollAndMore);
  meeting->clickMicrophone();
  waitUntil([this] { return sound().volume() > 0.0; }, serverTimeout, "the speakerphone to unmute");
  program->waitForNote("Teams unmuted → Jabra");
  letPass(pollAndMore);
  EXPECT_NEAR(sound().volume(), 0.7, 0.001);
  EXPECT_EQ(meeting->presses().size(), 2U);
  EXPECT_FALSE(meeting->isMuted());
}

TEST_P(CallOnEitherServerTest, ReplugWorksAgain) {
  sound().unplugSpeakerphone();
  waitUntil([this] { return !coordinator().jabra().deviceName(); }, serverTimeout,
            "the unplugging");
  EXPECT_FALSE(coordinator().jabra().isInCall());
  EXPECT_EQ(std::ranges::count(program->log.lines, "Jabra input not present"), 1);
  call.reset();
  sound().plugSpeakerphone();
  call = sound().record();
  waitUntil([this] { return coordinator().jabra().isInCall(); }, serverTimeout, "the call");
  sound().setVolume(0.0);
  meeting->waitForMuted(true);
  EXPECT_EQ(meeting->presses().size(), 1U);
}

TEST_P(CallOnEitherServerTest, PendingMuteSurvivesUnplugging) {
  sound().setVolume(0.0);
  letPass(Milliseconds{50});
  sound().unplugSpeakerphone();
  meeting->waitForMuted(true);
  EXPECT_EQ(meeting->presses().size(), 1U);
  EXPECT_EQ(coordinator().jabra().isMuted(), true);
}

TEST_P(CallOnEitherServerTest, SoundServerIsFoundAgainAfterACrash) {
  sound().kill();
  waitUntil([this] { return !coordinator().jabra().deviceName(); }, serverTimeout, "the loss");
  call.reset();
  sound().restart();
  call = sound().record();
  waitUntil([this] { return coordinator().jabra().isInCall(); }, serverTimeout, "the call");
  sound().setVolume(0.0);
  meeting->waitForMuted(true);
  EXPECT_EQ(meeting->presses().size(), 1U);
}

TEST_P(CallOnEitherServerTest, VolumeMeterIsNotACall) {
  call.reset();
  waitUntil([this] { return !coordinator().jabra().isInCall(); }, serverTimeout,
            "the end of the call");
  const auto meter = sound().meter();
  letPass(pollAndMore);
  EXPECT_FALSE(coordinator().jabra().isInCall());
  EXPECT_EQ(std::ranges::count(program->log.lines, "Jabra mic in use -> true"), 0);
}

TEST_P(CallOnEitherServerTest, PressesTheMeetingWhoseBrowserRecords) {
  rehearsal::Browser otherBrowser(desk().session(), {.profile = "other-chromium"});
  rehearsal::MeetingPage other(otherBrowser);
  call.reset();
  const auto recorders = [this] { return program->platform.audio.recordingProcesses(); };
  waitUntil([&] { return recorders().empty(); }, serverTimeout, "the end of the call");
  rehearsal::MeetingPage* const pages[] = {&*meeting, &other};
  for (rehearsal::MeetingPage* const recording : pages) {
    rehearsal::MeetingPage* const silent = recording == &other ? &*meeting : &other;
    const std::size_t before = silent->presses().size();
    const std::vector<std::int32_t> previous = recorders();
    recording->record();
    // The browser that recorded so far stops only now, so the call does not end.
    if (!previous.empty()) silent->stopRecording();
    waitUntil([&] { return recorders().size() == 1 && recorders() != previous; }, serverTimeout,
              "the recording to move");
    sound().setVolume(0.0);
    recording->waitForMuted(true);
    sound().setVolume(1.0);
    recording->waitForMuted(false);
    EXPECT_EQ(silent->presses().size(), before);
  }
}

TEST_F(CallTest, PressThatTeamsAlreadyFollowedChangesNothing) {
  sound().setVolume(0.0);
  meeting->pressMicrophone();
  program->waitForNote("Mute — Teams already in sync");
  EXPECT_EQ(meeting->presses().size(), 1U);
}

TEST_F(CallTest, TeamsIsFoundAgainAfterARestart) {
  meeting->close();
  sound().setVolume(0.0);
  program->waitForNote("Mute — Teams not running");
  // Before a poll has missed Teams, a meeting in the same state does not count as new.
  waitUntil([this] { return !coordinator().teamsMuted(); }, serverTimeout, "a poll to miss Teams");
  meeting.emplace(desk().browser());
  // The new meeting is live, so the poll that finds it unmutes the speakerphone.
  program->waitForNote("Teams unmuted → Jabra");
  waitUntil([this] { return sound().volume() > 0.0; }, serverTimeout, "the speakerphone to unmute");
  // Longer than the half second in which a change counts as our own echo.
  letPass(Milliseconds{700});
  sound().setVolume(0.0);
  meeting->waitForMuted(true);
  EXPECT_EQ(meeting->presses().size(), 1U);
}

TEST_F(CallTest, TeamsWithoutAMeetingHasNoButtonToPress) {
  meeting->leaveCall();
  sound().setVolume(0.0);
  program->waitForNote("Mute — no Teams meeting found");
}

TEST_F(CallTest, MinimisedTeamsIsPressedOnceAndReadCorrectly) {
  meeting->page().minimise();
  sound().setVolume(0.0);
  meeting->waitForMuted(true);
  letPass(pollAndMore);
  EXPECT_EQ(coordinator().teamsMuted(), true);
  EXPECT_EQ(sound().volume(), 0.0);
  sound().setVolume(1.0);
  meeting->waitForMuted(false);
  letPass(pollAndMore);
  EXPECT_EQ(coordinator().teamsMuted(), false);
  EXPECT_EQ(meeting->presses().size(), 2U);
}

/// The longest delay of a 10 ms timer: how long the loop was blocked.
class LoopDelay {
 public:
  LoopDelay() : source_(g_timeout_add(10, tick, this)) {}
  ~LoopDelay() { g_source_remove(source_); }

  Milliseconds value() const { return std::chrono::duration_cast<Milliseconds>(max_); }

 private:
  static gboolean tick(gpointer self) {
    auto& hold = *static_cast<LoopDelay*>(self);
    const auto now = std::chrono::steady_clock::now();
    hold.max_ = std::max(hold.max_, now - hold.last_);
    hold.last_ = now;
    return G_SOURCE_CONTINUE;
  }

  std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::duration max_{};
  guint source_;
};

TEST_F(CallTest, FrozenTeamsHoldsTheLoopForOneTimeoutAndIsReadAgain) {
  desk().browser().freeze();
  {
    const LoopDelay hold;
    sound().setVolume(0.0);
    program->waitForNote("Mute — no Teams meeting found");
    // One messaging timeout of a second, and as much again for a busy machine.
    EXPECT_LT(hold.value(), Milliseconds{2000});
  }
  desk().browser().thaw();
  waitUntil([this] { return coordinator().teamsMuted() == false; }, serverTimeout,
            "Teams to be read again");
  EXPECT_EQ(meeting->presses().size(), 0U);
}

TEST_F(CallTest, PressWithoutAccessibilityAsksForIt) {
  abandonDesk();
  desk().accessibility().setEnabled(false);
  sound().setVolume(0.0);
  program->waitForNote("Mute — grant Accessibility to Hushbox");
  EXPECT_EQ(meeting->presses().size(), 0U);
  EXPECT_TRUE(platform().accessibility.isProcessTrustedWithOptions(true) ||
              rehearsal::holdsWithin([] { return platform().accessibility.isProcessTrusted(); },
                                     serverTimeout));
}

}  // namespace
}  // namespace hushbox
