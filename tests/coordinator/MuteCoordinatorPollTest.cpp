#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/coordinator/MuteCoordinatorFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class MuteCoordinatorPollTest : public MuteCoordinatorFixture {
 protected:
  /// Advances by `seconds` and returns the times, in seconds, at which Teams was looked for.
  std::vector<double> secondsOfTeamsCalls(int seconds) {
    std::vector<double> found;
    takeTeamsCalls();
    for (int i = 0; i < seconds; ++i) {
      desk.advance(1s);
      if (takeTeamsCalls() > 0) found.push_back(now().count());
    }
    return found;
  }
};

const Lines sixReads = {
    "accessibility: trusted -> true",
    "workspace: applications: 501",
    "accessibility: application 501",
    "accessibility: timeout application 501: 1 s -> 0",
    "accessibility: set application 501 AXManualAccessibility: true -> 0",
    "accessibility: set application 501 AXEnhancedUserInterface: true -> 0",
    "accessibility: copy microphone AXRole: \"AXButton\" -> 0",
    "accessibility: copy microphone AXDOMIdentifier: \"microphone-button\" -> 0",
    "accessibility: copy microphone AXDescription: \"Mute mic (⌘+Shift+M)\" -> 0",
    "accessibility: copy microphone AXTitle -> -25205",
    "accessibility: copy microphone AXHelp -> -25205",
    "accessibility: copy microphone AXDOMIdentifier: \"microphone-button\" -> 0"};

// Outside a call

TEST_F(MuteCoordinatorPollTest, AnnouncesOncePerSecondOutsideACall) {
  startWithSpeakerphone();
  desk.teams.joinMeeting(true);
  desk.advance(999'999'999ns);
  EXPECT_THAT(desk.journal.take(), IsEmpty());
  desk.advance(1ns);
  EXPECT_THAT(desk.journal.take(), ElementsAre("coordinator: will change"));
  desk.advance(30s);
  EXPECT_EQ(desk.journal.take(), Lines(30, "coordinator: will change"));
}

TEST_F(MuteCoordinatorPollTest, ForgetsTeamsStateAtTheFirstPollAfterTheCall) {
  startCall(0.8F, false);
  desk.advance(1s);
  setInCall(false);
  desk.advance(900ms);
  EXPECT_EQ(coordinator->teamsMuted(), false);
  desk.advance(100ms);
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
}

TEST_F(MuteCoordinatorPollTest, HeadsetKeepsItsStateAfterTheCall) {
  startCall(0.8F, true);
  desk.advance(1s);
  ASSERT_EQ(coordinator->jabra().isMuted(), true);
  setInCall(false);
  desk.journal.take();
  desk.advance(10s);
  EXPECT_THAT(desk.journal.take("audio"), IsEmpty());
  EXPECT_EQ(coordinator->jabra().isMuted(), true);
}

TEST_F(MuteCoordinatorPollTest, ForgetsThePressedStateAtTheNextPollOutsideACall) {
  startWithSpeakerphone();
  desk.teams.joinMeeting(false);
  press(ButtonEvent::muted);
  EXPECT_EQ(coordinator->teamsMuted(), true);
  desk.advance(700ms);
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
}

TEST_F(MuteCoordinatorPollTest, ForgetsTeamsStateWhenTheHeadsetIsUnplugged) {
  startCall(0.8F, false);
  desk.advance(1s);
  desk.audio.unplug(speakerphone);
  desk.advance(1s);
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
}

// A call with Teams

TEST_F(MuteCoordinatorPollTest, ReadsTeamsAtTheFirstPollOfACall) {
  startWithSpeakerphone();
  desk.advance(30s);
  desk.teams.joinMeeting(false);
  desk.advance(500ms);
  setInCall(true);
  takeTeamsCalls();
  desk.advance(499'999'999ns);
  EXPECT_EQ(takeTeamsCalls(), 0U);
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
  desk.advance(1ns);
  EXPECT_EQ(takeTeamsCalls(), 1U);
  EXPECT_EQ(coordinator->teamsMuted(), false);
}

TEST_F(MuteCoordinatorPollTest, ReadsTeamsEverySecondWhileItIsFound) {
  startCall(0.8F, false);
  EXPECT_THAT(secondsOfTeamsCalls(6), ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(MuteCoordinatorPollTest, UnchangedStateCostsSixReadsAndNothingElse) {
  startCall(0.8F, false);
  desk.advance(1s);
  desk.journal.take();
  desk.advance(1s);
  EXPECT_EQ(desk.journal.take(), sixReads);
}

TEST_F(MuteCoordinatorPollTest, HeadsetFollowsAMuteInTeams) {
  startCall(0.8F, false);
  desk.advance(1s);
  desk.teams.setMuted(true);
  desk.journal.take();
  desk.advance(1s);
  Lines lines = desk.journal.take();
  lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(sixReads.size()));
  EXPECT_THAT(lines,
              ElementsAre("coordinator: will change",  // Teams' state
                          "audio: get 2 input volume (4 bytes): 0.8 -> 0",
                          "coordinator: will change",  // the headset's state
                          "audio: set 2 input volume (4 bytes): 0 -> 0",
                          "log: jabra info: Set Jabra input volume to 0.000000 (status 0)",
                          "log: coordinator info: Teams muted → Jabra",
                          "coordinator: will change",  // the status line
                          // The echo of the write.
                          "audio: get 2 input volume (4 bytes): 0 -> 0",
                          "log: jabra info: Jabra input volume 0.000000 -> muted=true "
                          "selfInitiated=true"));
  EXPECT_EQ(coordinator->teamsMuted(), true);
  EXPECT_EQ(coordinator->jabra().isMuted(), true);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Teams muted → Jabra");
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0);
}

TEST_F(MuteCoordinatorPollTest, HeadsetFollowsAnUnmuteInTeams) {
  startCall(0.8F, false);
  desk.advance(1s);
  desk.teams.setMuted(true);
  desk.advance(1s);
  desk.teams.setMuted(false);
  desk.advance(1s);
  EXPECT_EQ(coordinator->teamsMuted(), false);
  EXPECT_EQ(coordinator->jabra().isMuted(), false);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Teams unmuted → Jabra");
  EXPECT_EQ(desk.audio.inputVolume(speakerphone), 0.8F);
}

TEST_F(MuteCoordinatorPollTest, ChangeInTeamsIsNotPressedBackIntoTeams) {
  startCall(0.8F, false);
  for (int change = 0; change < 6; ++change) {
    desk.advance(1s);
    desk.teams.setMuted(!desk.teams.isMuted());
  }
  desk.advance(60s);
  EXPECT_EQ(desk.teams.pressCount(), 0U);
}

TEST_F(MuteCoordinatorPollTest, HeadsetFollowsTeamsAtTheStartOfACall) {
  startCall(0.8F, true);
  desk.advance(1s);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Teams muted → Jabra");
  EXPECT_EQ(coordinator->jabra().isMuted(), true);
}

TEST_F(MuteCoordinatorPollTest, StateThatMatchesTheHeadsetIsOnlyStored) {
  startCall(0, true);
  desk.advance(1s);
  EXPECT_EQ(coordinator->teamsMuted(), true);
  EXPECT_EQ(takeAnnouncements(), 1U);
  EXPECT_THAT(desk.journal.take("audio"), IsEmpty());
  EXPECT_EQ(coordinator->lastEvent(), "Waiting for Jabra button…");
}

TEST_F(MuteCoordinatorPollTest, ChangeThatMatchesTheHeadsetIsOnlyStored) {
  startCall(0.8F, false);
  desk.advance(1s);
  muteOnlyTheHeadset();
  desk.teams.setMuted(true);
  desk.journal.take();
  desk.advance(700ms);
  EXPECT_EQ(coordinator->teamsMuted(), true);
  EXPECT_EQ(takeAnnouncements(), 1U);
  EXPECT_THAT(desk.journal.take("audio"), IsEmpty());
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Mute — no Teams meeting found");
}

TEST_F(MuteCoordinatorPollTest, HeadsetThatDiffersFromAnUnchangedStateIsLeftAlone) {
  startCall(0.8F, false);
  desk.advance(1s);
  muteOnlyTheHeadset();
  desk.journal.take();
  desk.advance(10s);
  EXPECT_EQ(takeAnnouncements(), 0U);
  EXPECT_THAT(desk.journal.take("audio"), IsEmpty());
  EXPECT_EQ(coordinator->jabra().isMuted(), true);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Mute — no Teams meeting found");
}

TEST_F(MuteCoordinatorPollTest, HeadsetInAnUnknownStateFollowsTeams) {
  desk.audio.addFault({.status = audio::hardwareNotRunning, .times = 1});
  startCall(0.8F, false);
  ASSERT_EQ(coordinator->jabra().isMuted(), std::nullopt);
  desk.advance(1s);
  EXPECT_EQ(coordinator->jabra().isMuted(), false);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Teams unmuted → Jabra");
  EXPECT_THAT(desk.log.texts("jabra"),
              testing::Contains("Set Jabra input volume to 0.600000 (status 0)"));
}

TEST_F(MuteCoordinatorPollTest, PollAfterAPressFindsTheSameStateAndDoesNothing) {
  startCall(0.8F, false);
  desk.advance(1s);
  press(ButtonEvent::muted);
  desk.journal.take();
  desk.advance(10s);
  EXPECT_EQ(takeAnnouncements(), 0U);
  EXPECT_THAT(desk.journal.take("audio"), IsEmpty());
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Mute → Teams");
}

// A call without Teams

TEST_F(MuteCoordinatorPollTest, ReadsTeamsAgainExactlyFiveSecondsAfterEachFailure) {
  startWithSpeakerphone();
  setInCall(true);
  EXPECT_THAT(secondsOfTeamsCalls(22), ElementsAre(1, 6, 11, 16, 21));
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
}

TEST_F(MuteCoordinatorPollTest, FailedReadLeavesTheHeadsetAndTheStatusLineAlone) {
  startCall(0.8F, true);
  desk.advance(1s);
  ASSERT_EQ(coordinator->jabra().isMuted(), true);
  desk.teams.leaveMeeting();
  desk.journal.take();
  desk.advance(10s);
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
  EXPECT_THAT(desk.journal.take("audio"), IsEmpty());
  EXPECT_EQ(coordinator->jabra().isMuted(), true);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Teams muted → Jabra");
}

TEST_F(MuteCoordinatorPollTest, EachFailureAnnouncesOnceAndThePauseDoesNot) {
  startWithSpeakerphone();
  setInCall(true);
  takeAnnouncements();
  std::vector<std::size_t> announcements;
  for (int second = 1; second <= 7; ++second) {
    desk.advance(1s);
    announcements.push_back(takeAnnouncements());
  }
  EXPECT_THAT(announcements, ElementsAre(1, 0, 0, 0, 0, 1, 0));
}

TEST_F(MuteCoordinatorPollTest, EveryReasonForAFailedReadPausesThePoll) {
  startCall(0.8F, false);
  desk.advance(1s);
  desk.teams.leaveMeeting();
  desk.advance(1s);
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
  desk.teams.joinMeeting(false);
  EXPECT_THAT(secondsOfTeamsCalls(6), ElementsAre(7, 8));
  desk.accessibility.setTrusted(false);
  desk.advance(1s);
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
  desk.accessibility.setTrusted(true);
  EXPECT_THAT(secondsOfTeamsCalls(6), ElementsAre(14, 15));
  desk.teams.quit();
  desk.advance(1s);
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
  desk.teams.joinMeeting(false);
  EXPECT_THAT(secondsOfTeamsCalls(6), ElementsAre(21, 22));
  EXPECT_EQ(coordinator->teamsMuted(), false);
}

TEST_F(MuteCoordinatorPollTest, PauseContinuesAcrossTheEndOfACall) {
  startWithSpeakerphone();
  setInCall(true);
  desk.advance(1s);
  setInCall(false);
  desk.advance(1s);
  desk.teams.joinMeeting(false);
  setInCall(true);
  EXPECT_THAT(secondsOfTeamsCalls(5), ElementsAre(6, 7));
}

TEST_F(MuteCoordinatorPollTest, PollOutsideACallStartsNoPause) {
  startWithSpeakerphone();
  desk.advance(3s);
  setInCall(true);
  EXPECT_THAT(secondsOfTeamsCalls(2), ElementsAre(4));
}

TEST_F(MuteCoordinatorPollTest, PressDuringThePauseReachesTeams) {
  startWithSpeakerphone();
  setInCall(true);
  desk.advance(1s);
  desk.teams.joinMeeting(false);
  press(ButtonEvent::muted);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Mute → Teams");
  EXPECT_EQ(coordinator->teamsMuted(), true);
  EXPECT_THAT(secondsOfTeamsCalls(6), testing::SizeIs(2));
}

TEST_F(MuteCoordinatorPollTest, EndOfTheCallIsNoticedDuringThePause) {
  startWithSpeakerphone();
  setInCall(true);
  desk.advance(1s);
  desk.teams.joinMeeting(false);
  press(ButtonEvent::muted);
  setInCall(false);
  ASSERT_EQ(coordinator->teamsMuted(), true);
  desk.advance(700ms);
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
}

TEST_F(MuteCoordinatorPollTest, PauseStartsWhenAFrozenTeamsHasTimedOut) {
  startCall(0.8F, false);
  desk.teams.freeze();
  desk.advance(1s);
  // Two attribute writes, the role and the children of the application: one second each.
  EXPECT_EQ(now(), TimeInterval(5s));
  EXPECT_THAT(secondsOfTeamsCalls(4), IsEmpty());
  desk.teams.thaw();
  EXPECT_THAT(secondsOfTeamsCalls(2), ElementsAre(10, 11));
  EXPECT_EQ(coordinator->teamsMuted(), false);
}

TEST_F(MuteCoordinatorPollTest, WakingRunsOnePoll) {
  startCall(0.8F, false);
  desk.advance(1s);
  takeTeamsCalls();
  desk.loop.sleep(1h);
  desk.loop.wake();
  EXPECT_EQ(takeTeamsCalls(), 1U);
}

// The thread

TEST(MuteCoordinatorPollDeathTest, PollOffTheMainThreadAborts) {
  SimulatedDesk desk;
  const MuteCoordinator coordinator;
  desk.loop.runUntilIdle();
  EXPECT_DEATH(desk.loop.runInBackground([&] { desk.advance(1s); }), "");
}

TEST(MuteCoordinatorPollDeathTest, PollOffTheMainThreadAbortsEvenWithoutACoordinator) {
  SimulatedDesk desk;
  { const MuteCoordinator coordinator; }
  desk.loop.runUntilIdle();
  EXPECT_DEATH(desk.loop.runInBackground([&] { desk.advance(1s); }), "");
}

}  // namespace
}  // namespace hushbox
