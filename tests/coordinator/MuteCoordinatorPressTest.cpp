#include <gmock/gmock.h>

#include <optional>
#include <ostream>
#include <string>

#include "tests/coordinator/MuteCoordinatorFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class MuteCoordinatorPressTest : public MuteCoordinatorFixture {
 protected:
  /// Starts a call with a Teams meeting and polls once.
  void startInMeeting(bool muted) {
    startCall(muted ? 0 : 0.8F, muted);
    desk.advance(1s);
    ASSERT_EQ(coordinator->teamsMuted(), muted);
    desk.journal.take();
  }
};

// Every event with every result

enum class Teams { pressed, alreadySynced, notTrusted, notRunning, noMeeting, pressFails };

struct Case {
  const char* name;
  ButtonEvent event;
  Teams teams;
  const char* status;
  /// The coordinator's `teamsMuted` after the press; before, it is unknown.
  std::optional<bool> teamsMuted;
};

void PrintTo(const Case& one, std::ostream* out) {
  *out << one.name;
}

class MuteCoordinatorPressResultTest : public MuteCoordinatorPressTest,
                                       public testing::WithParamInterface<Case> {
 protected:
  void bringAbout(Teams teams, ButtonEvent event) {
    const bool wanted = event == ButtonEvent::muted;
    switch (teams) {
      case Teams::pressed:
        return desk.teams.joinMeeting(!wanted);
      case Teams::alreadySynced:
        return desk.teams.joinMeeting(wanted);
      case Teams::notTrusted:
        desk.teams.joinMeeting(!wanted);
        return desk.accessibility.setTrusted(false);
      case Teams::notRunning:
        return;
      case Teams::noMeeting:
        return desk.teams.launch();
      case Teams::pressFails:
        desk.teams.joinMeeting(!wanted);
        return desk.teams.setPressStatus(accessibility::failure);
    }
  }
};

TEST_P(MuteCoordinatorPressResultTest, SetsTheStatusLine) {
  const Case& row = GetParam();
  startWithSpeakerphone(row.event == ButtonEvent::unmuted ? 0 : 0.8F);
  bringAbout(row.teams, row.event);
  press(row.event);
  EXPECT_EQ(coordinator->lastEvent(), std::string("10:42  ") + row.status);
  EXPECT_THAT(desk.log.texts("coordinator"), ElementsAre(row.status));
  EXPECT_EQ(coordinator->teamsMuted(), row.teamsMuted);
  EXPECT_EQ(desk.teams.pressCount(), row.teams == Teams::pressed ? 1U : 0U);
  // The headset's state if it changes, Teams' state if it is assigned, and the status line.
  const std::size_t headset = row.event == ButtonEvent::toggled ? 0 : 1;
  const std::size_t assigned = row.teamsMuted ? 1 : 0;
  EXPECT_EQ(takeAnnouncements(), headset + assigned + 1);
}

INSTANTIATE_TEST_SUITE_P(
    Results, MuteCoordinatorPressResultTest,
    testing::Values(
        Case{"MutePressed", ButtonEvent::muted, Teams::pressed, "Mute → Teams", true},
        Case{"MuteInSync", ButtonEvent::muted, Teams::alreadySynced, "Mute — Teams already in sync",
             std::nullopt},
        Case{"MuteNotTrusted", ButtonEvent::muted, Teams::notTrusted,
             "Mute — grant Accessibility to Hushbox", std::nullopt},
        Case{"MuteNotRunning", ButtonEvent::muted, Teams::notRunning, "Mute — Teams not running",
             std::nullopt},
        Case{"MuteNoMeeting", ButtonEvent::muted, Teams::noMeeting, "Mute — no Teams meeting found",
             std::nullopt},
        Case{"MutePressFails", ButtonEvent::muted, Teams::pressFails,
             "Mute — no Teams meeting found", std::nullopt},
        Case{"UnmutePressed", ButtonEvent::unmuted, Teams::pressed, "Unmute → Teams", false},
        Case{"UnmuteInSync", ButtonEvent::unmuted, Teams::alreadySynced,
             "Unmute — Teams already in sync", std::nullopt},
        Case{"UnmuteNotTrusted", ButtonEvent::unmuted, Teams::notTrusted,
             "Unmute — grant Accessibility to Hushbox", std::nullopt},
        Case{"UnmuteNotRunning", ButtonEvent::unmuted, Teams::notRunning,
             "Unmute — Teams not running", std::nullopt},
        Case{"UnmuteNoMeeting", ButtonEvent::unmuted, Teams::noMeeting,
             "Unmute — no Teams meeting found", std::nullopt},
        Case{"UnmutePressFails", ButtonEvent::unmuted, Teams::pressFails,
             "Unmute — no Teams meeting found", std::nullopt},
        Case{"TogglePressed", ButtonEvent::toggled, Teams::pressed, "Toggle → Teams", std::nullopt},
        Case{"ToggleNotTrusted", ButtonEvent::toggled, Teams::notTrusted,
             "Toggle — grant Accessibility to Hushbox", std::nullopt},
        Case{"ToggleNotRunning", ButtonEvent::toggled, Teams::notRunning,
             "Toggle — Teams not running", std::nullopt},
        Case{"ToggleNoMeeting", ButtonEvent::toggled, Teams::noMeeting,
             "Toggle — no Teams meeting found", std::nullopt},
        Case{"TogglePressFails", ButtonEvent::toggled, Teams::pressFails,
             "Toggle — no Teams meeting found", std::nullopt}),
    [](const auto& info) { return info.param.name; });

// A known state

TEST_F(MuteCoordinatorPressTest, MuteSetsAKnownStateToMuted) {
  startInMeeting(false);
  press(ButtonEvent::muted);
  EXPECT_EQ(coordinator->teamsMuted(), true);
  EXPECT_TRUE(desk.teams.isMuted());
}

TEST_F(MuteCoordinatorPressTest, UnmuteSetsAKnownStateToUnmuted) {
  startInMeeting(true);
  press(ButtonEvent::unmuted);
  EXPECT_EQ(coordinator->teamsMuted(), false);
  EXPECT_FALSE(desk.teams.isMuted());
}

TEST_F(MuteCoordinatorPressTest, ToggleNegatesAKnownState) {
  startInMeeting(false);
  press(ButtonEvent::toggled);
  EXPECT_EQ(coordinator->teamsMuted(), true);
  // Teams' state and the status line.
  EXPECT_EQ(takeAnnouncements(), 2U);
  // The press does not touch the headset's state; a poll would, if Teams' state differed.
  EXPECT_EQ(coordinator->jabra().isMuted(), false);
  press(ButtonEvent::toggled);
  EXPECT_EQ(coordinator->teamsMuted(), false);
}

TEST_F(MuteCoordinatorPressTest, ToggleOfAnUnknownStateAssignsNothing) {
  startWithSpeakerphone();
  desk.teams.joinMeeting(false);
  setVolume(0);
  desk.journal.take();
  setVolume(0.8F);
  EXPECT_TRUE(desk.teams.isMuted());
  EXPECT_EQ(coordinator->teamsMuted(), std::nullopt);
  EXPECT_EQ(takeAnnouncements(), 1U);
}

TEST_F(MuteCoordinatorPressTest, ResultsOtherThanPressedKeepAKnownState) {
  startInMeeting(false);
  muteOnlyTheHeadset();
  EXPECT_EQ(coordinator->teamsMuted(), false);
  desk.accessibility.setTrusted(false);
  press(ButtonEvent::unmuted);
  EXPECT_EQ(coordinator->teamsMuted(), false);
}

TEST_F(MuteCoordinatorPressTest, MuteWhileTeamsIsMutedAssignsNothing) {
  startInMeeting(false);
  desk.teams.setMuted(true);
  press(ButtonEvent::muted);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Mute — Teams already in sync");
  EXPECT_EQ(coordinator->teamsMuted(), false);
  EXPECT_EQ(takeAnnouncements(), 2U);
}

TEST_F(MuteCoordinatorPressTest, PressAssignsEvenAnEqualState) {
  startInMeeting(false);
  muteOnlyTheHeadset();
  desk.teams.setPressStatus(accessibility::success);
  desk.teams.setMuted(true);
  desk.journal.take();
  press(ButtonEvent::unmuted);
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Unmute → Teams");
  EXPECT_EQ(coordinator->teamsMuted(), false);
  // The headset's state, Teams' state and the status line.
  EXPECT_EQ(takeAnnouncements(), 3U);
}

// The whole press

TEST_F(MuteCoordinatorPressTest, PressTakesItsStepsInOrder) {
  startInMeeting(false);
  setVolume(0);
  desk.journal.take();
  desk.advance(300ms);
  EXPECT_THAT(
      desk.journal.take(),
      ElementsAre("coordinator: will change", "accessibility: trusted -> true",
                  "workspace: applications: 501", "accessibility: application 501",
                  "accessibility: timeout application 501: 1 s -> 0",
                  "accessibility: set application 501 AXManualAccessibility: true -> 0",
                  "accessibility: set application 501 AXEnhancedUserInterface: true -> 0",
                  "accessibility: copy microphone AXRole: \"AXButton\" -> 0",
                  "accessibility: copy microphone AXDOMIdentifier: \"microphone-button\" -> 0",
                  "accessibility: copy microphone AXDescription: \"Mute mic (⌘+Shift+M)\" -> 0",
                  "accessibility: copy microphone AXTitle -> -25205",
                  "accessibility: copy microphone AXHelp -> -25205",
                  "accessibility: copy microphone AXDOMIdentifier: \"microphone-button\" -> 0",
                  "accessibility: perform microphone AXPress -> 0",
                  "log: teams-ui info: Pressed Teams mic button 'Mute mic (⌘+Shift+M)' -> 0",
                  "coordinator: will change", "log: coordinator info: Mute → Teams",
                  "coordinator: will change"));
}

TEST_F(MuteCoordinatorPressTest, OnePressOfTheDevicePressesTeamsOnce) {
  startInMeeting(false);
  press(ButtonEvent::muted);
  desk.advance(60s);
  EXPECT_EQ(desk.teams.pressCount(), 1U);
  EXPECT_TRUE(desk.teams.isMuted());
}

TEST_F(MuteCoordinatorPressTest, NothingIsRetried) {
  startWithSpeakerphone();
  desk.teams.launch();
  press(ButtonEvent::muted);
  EXPECT_EQ(takeTeamsCalls(), 1U);
  desk.teams.joinMeeting(false);
  desk.advance(60s);
  EXPECT_EQ(takeTeamsCalls(), 0U);
  EXPECT_EQ(desk.teams.pressCount(), 0U);
}

TEST_F(MuteCoordinatorPressTest, HeadsetIsNotWritten) {
  startInMeeting(false);
  for (const ButtonEvent event :
       {ButtonEvent::muted, ButtonEvent::unmuted, ButtonEvent::toggled, ButtonEvent::toggled}) {
    press(event);
    desk.advance(100ms);
  }
  for (const std::string& line : desk.journal.take("audio")) {
    EXPECT_THAT(line, testing::Not(testing::StartsWith("set")));
  }
}

TEST_F(MuteCoordinatorPressTest, EveryPressReportsAMissingPermission) {
  startWithSpeakerphone(0.8F);
  desk.accessibility.setTrusted(false);
  press(ButtonEvent::muted);
  press(ButtonEvent::unmuted);
  press(ButtonEvent::toggled);
  EXPECT_THAT(desk.log.texts("coordinator"),
              ElementsAre("Mute — grant Accessibility to Hushbox",
                          "Unmute — grant Accessibility to Hushbox",
                          "Toggle — grant Accessibility to Hushbox"));
  EXPECT_EQ(desk.accessibility.promptCount(), 0U);
}

TEST_F(MuteCoordinatorPressTest, FrozenTeamsDelaysThePressOnlyByItsTimeouts) {
  startInMeeting(false);
  desk.teams.freeze();
  setVolume(0);
  const TimeInterval before = now();
  desk.advance(300ms);
  // Two attribute writes, the cached button, then the role and the children of the application.
  EXPECT_EQ(now() - before, TimeInterval(5300ms));
  EXPECT_EQ(coordinator->lastEvent(), "10:42  Mute — no Teams meeting found");
}

// The status line

TEST_F(MuteCoordinatorPressTest, StatusStartsWithTheTimeInTheUsersStyle) {
  startWithSpeakerphone();
  desk.locale.setShortTime("9:05 PM");
  press(ButtonEvent::muted);
  EXPECT_EQ(coordinator->lastEvent(), "9:05 PM  Mute — Teams not running");
  desk.locale.setShortTime("21.06");
  press(ButtonEvent::unmuted);
  EXPECT_EQ(coordinator->lastEvent(), "21.06  Unmute — Teams not running");
}

TEST_F(MuteCoordinatorPressTest, RepeatedStatusIsLoggedAndAnnouncedAgain) {
  startWithSpeakerphone();
  for (int i = 1; i <= 2; ++i) {
    press(ButtonEvent::toggled);
    EXPECT_EQ(desk.log.texts("coordinator"), Lines(i, "Toggle — Teams not running"));
    EXPECT_EQ(takeAnnouncements(), 1U);
  }
}

TEST_F(MuteCoordinatorPressTest, StatusGoesToTheLogWithoutTheTime) {
  startWithSpeakerphone();
  press(ButtonEvent::muted);
  EXPECT_THAT(desk.log.records(),
              testing::Contains(LogRecord{"org.hushbox.Hushbox", "coordinator", LogLevel::info,
                                          "Mute — Teams not running"}));
}

}  // namespace
}  // namespace hushbox
