#include "teams/TeamsUI.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/teams/TeamsUIFixture.h"

namespace hushbox {

void PrintTo(TeamsUI::Result result, std::ostream* out) {
  const char* names[] = {"pressed", "alreadySynced", "notTrusted", "teamsNotRunning", "noMeeting"};
  *out << names[static_cast<int>(result)];
}

namespace {

using namespace std::chrono_literals;
using Result = TeamsUI::Result;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

class TeamsUITest : public TeamsUIFixture {
 protected:
  TimeInterval took(const std::function<void()>& operation) const {
    const Instant before = desk.loop.now();
    operation();
    return desk.loop.now() - before;
  }
};

TEST_F(TeamsUITest, ResultHasFiveCasesInOrder) {
  EXPECT_EQ(static_cast<int>(Result::pressed), 0);
  EXPECT_EQ(static_cast<int>(Result::alreadySynced), 1);
  EXPECT_EQ(static_cast<int>(Result::notTrusted), 2);
  EXPECT_EQ(static_cast<int>(Result::teamsNotRunning), 3);
  EXPECT_EQ(static_cast<int>(Result::noMeeting), 4);
}

// Permission and application

TEST_F(TeamsUITest, WithoutPermissionNothingElseIsCalled) {
  show("Mute");
  desk.accessibility.setTrusted(false);
  EXPECT_EQ(TeamsUI::setMuted(true), Result::notTrusted);
  EXPECT_EQ(TeamsUI::setMuted(std::nullopt), Result::notTrusted);
  EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);
  EXPECT_THAT(desk.journal.take(), ElementsAreArray(Lines(3, "accessibility: trusted -> false")));
  EXPECT_EQ(desk.accessibility.promptCount(), 0U);
}

TEST_F(TeamsUITest, WithoutTeamsNoElementIsCreated) {
  desk.workspace.quit(501);
  EXPECT_EQ(TeamsUI::setMuted(true), Result::teamsNotRunning);
  EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("accessibility: trusted -> true", "workspace: applications:",
                          "accessibility: trusted -> true", "workspace: applications:"));
}

TEST_F(TeamsUITest, WithoutAMicrophoneButtonThereIsNoMeeting) {
  EXPECT_EQ(TeamsUI::setMuted(true), Result::noMeeting);
  EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);
  EXPECT_THAT(desk.log.records(), IsEmpty());
}

TEST_F(TeamsUITest, FirstTeamsInTheWorkspaceIsUsed) {
  for (const bool newFirst : {true, false}) {
    desk.workspace.quit(501);
    desk.workspace.quit(502);
    desk.workspace.launch({newFirst ? "com.microsoft.teams2" : "com.microsoft.teams", 502});
    desk.workspace.launch({newFirst ? "com.microsoft.teams" : "com.microsoft.teams2", 501});
    desk.journal.take();
    TeamsUI::currentMuteState();
    const Lines lines = desk.journal.take("accessibility");
    EXPECT_THAT(lines, Contains("application 502"));
    EXPECT_THAT(lines, Not(Contains("application 501")));
  }
}

TEST_F(TeamsUITest, BundleIdentifiersMustMatchExactly) {
  desk.workspace.quit(501);
  std::int32_t process = 600;
  for (const std::optional<std::string>& identifier :
       {std::optional<std::string>(), std::optional<std::string>(""),
        std::optional<std::string>("com.microsoft.teams3"),
        std::optional<std::string>("com.microsoft.teams2.helper"),
        std::optional<std::string>("Com.Microsoft.Teams"),
        std::optional<std::string>("com.microsoft.team"),
        std::optional<std::string>("com.microsoft.teams\u0301"),
        std::optional<std::string>("x.com.microsoft.teams")}) {
    desk.workspace.launch({identifier, process++});
  }
  EXPECT_EQ(TeamsUI::setMuted(true), Result::teamsNotRunning);
  desk.workspace.launch({"com.microsoft.teams", 501});
  show("Mute");
  EXPECT_EQ(TeamsUI::setMuted(true), Result::pressed);
}

TEST_F(TeamsUITest, StatusesOfTheAttributeWritesAreIgnored) {
  desk.accessibility.setAttributeWriteStatus(accessibility::attributeUnsupported);
  show("Mute");
  EXPECT_EQ(TeamsUI::setMuted(true), Result::pressed);
}

TEST_F(TeamsUITest, TeamsThatCannotBeReachedStillCountsAsRunning) {
  desk.accessibility.quit(501);
  EXPECT_EQ(TeamsUI::setMuted(true), Result::noMeeting);
  EXPECT_THAT(
      desk.journal.take("accessibility"),
      ElementsAre("trusted -> true", "application 501", "timeout application 501: 1 s -> -25202",
                  "set application 501 AXManualAccessibility: true -> -25202",
                  "set application 501 AXEnhancedUserInterface: true -> -25202",
                  "copy application 501 AXRole -> -25202",
                  "copy application 501 AXChildren -> -25202"));
}

// Pressing

TEST_F(TeamsUITest, PressTakesItsStepsInOrder) {
  show("Mute mic");
  EXPECT_EQ(TeamsUI::setMuted(std::nullopt), Result::pressed);
  EXPECT_EQ(desk.journal.take(),
            joined(joined(joined(approach(), walkToTheMicrophone()), sixReads("Mute mic")),
                   {"accessibility: perform microphone AXPress -> 0",
                    "log: teams-ui info: Pressed Teams mic button 'Mute mic' -> 0"}));
}

TEST_F(TeamsUITest, PressIntoAWantedStateTakesTheSameSteps) {
  show("Mute mic");
  TeamsUI::currentMuteState();
  desk.journal.take();
  EXPECT_EQ(TeamsUI::setMuted(true), Result::pressed);
  EXPECT_EQ(desk.journal.take(),
            joined(joined(approach(), sixReads("Mute mic")),
                   {"accessibility: perform microphone AXPress -> 0",
                    "log: teams-ui info: Pressed Teams mic button 'Mute mic' -> 0"}));
}

TEST_F(TeamsUITest, PressesOnlyIfTeamsIsNotInTheWantedState) {
  struct Case {
    const char* label;
    std::optional<bool> wanted;
    Result result;
    std::size_t presses;
  };
  for (const Case& one : {Case{"Mute (⌘+Shift+M)", true, Result::pressed, 1},
                          {"Mute (⌘+Shift+M)", false, Result::alreadySynced, 0},
                          {"Mute (⌘+Shift+M)", std::nullopt, Result::pressed, 1},
                          {"Unmute (⌘+Shift+M)", true, Result::alreadySynced, 0},
                          {"Unmute (⌘+Shift+M)", false, Result::pressed, 1},
                          {"Unmute (⌘+Shift+M)", std::nullopt, Result::pressed, 1},
                          {"UNMUTE", true, Result::alreadySynced, 0}}) {
    app->removeChildren();
    presses.clear();
    show(one.label);
    EXPECT_EQ(TeamsUI::setMuted(one.wanted), one.result) << one.label;
    EXPECT_EQ(presses, Lines(one.presses, "AXPress")) << one.label;
  }
}

TEST_F(TeamsUITest, NothingIsLoggedWithoutAPress) {
  show("Unmute");
  TeamsUI::setMuted(true);
  TeamsUI::currentMuteState();
  EXPECT_THAT(desk.log.records(), IsEmpty());
}

TEST_F(TeamsUITest, PressIsLoggedWithTheOriginalLabel) {
  show("UnMute MIC 100% 'ü'");
  TeamsUI::setMuted(false);
  EXPECT_THAT(desk.log.records(),
              ElementsAre(LogRecord{"org.hushbox.Hushbox", "teams-ui", LogLevel::info,
                                    "Pressed Teams mic button 'UnMute MIC 100% 'ü'' -> 0"}));
}

TEST_F(TeamsUITest, FailedPressIsLoggedAndReturnsNoMeeting) {
  for (const AccessibilityError status :
       {accessibility::cannotComplete, accessibility::failure, accessibility::actionUnsupported,
        AccessibilityError{1}}) {
    app->removeChildren();
    show("Mute", status);
    EXPECT_EQ(TeamsUI::setMuted(true), Result::noMeeting);
    ASSERT_FALSE(desk.log.records().empty());
    EXPECT_EQ(desk.log.records().back(),
              (LogRecord{"org.hushbox.Hushbox", "teams-ui", LogLevel::info,
                         "Pressed Teams mic button 'Mute' -> " + std::to_string(status)}));
  }
  EXPECT_EQ(presses.size(), 4U);
}

TEST_F(TeamsUITest, ReadingTheStateNeverPresses) {
  show("Mute");
  EXPECT_EQ(TeamsUI::currentMuteState(), false);
  app->removeChildren();
  show("Unmute");
  EXPECT_EQ(TeamsUI::currentMuteState(), true);
  EXPECT_THAT(presses, IsEmpty());
}

// A frozen or slow Teams

TEST_F(TeamsUITest, EachCallToAFrozenTeamsTimesOutAfterOneSecond) {
  show("Mute");
  desk.accessibility.freeze(501);
  Result result = Result::pressed;
  // Two attribute writes, then the role and the children of the application.
  EXPECT_EQ(took([&] { result = TeamsUI::setMuted(true); }), 4s);
  EXPECT_EQ(result, Result::noMeeting);
}

TEST_F(TeamsUITest, FrozenTeamsWithACachedButtonCostsOneMoreSecond) {
  show("Mute");
  TeamsUI::currentMuteState();
  desk.accessibility.freeze(501);
  std::optional<bool> state = true;
  EXPECT_EQ(took([&] { state = TeamsUI::currentMuteState(); }), 5s);
  EXPECT_EQ(state, std::nullopt);
}

TEST_F(TeamsUITest, SlowTeamsSucceedsWithinTheTimeout) {
  show("Mute");
  desk.accessibility.setResponseTime(501, 1s);
  EXPECT_EQ(TeamsUI::setMuted(true), Result::pressed);
  desk.accessibility.setResponseTime(501, 1001ms);
  EXPECT_EQ(TeamsUI::setMuted(true), Result::noMeeting);
}

// Failed reads

TEST_F(TeamsUITest, OutputOfAFailedReadIsNotUsed) {
  const auto microphone = show("Mute");
  // The accessibility API's failures are negative numbers.
  for (const AccessibilityError status : {accessibility::cannotComplete, AccessibilityError{1}}) {
    SCOPED_TRACE(status);
    microphone->attributes = button("Mute");
    microphone->attributes["AXRole"] = status;
    desk.accessibility.setOutputOfFailedReads(std::string("AXButton"));
    EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);

    microphone->attributes = {{"AXRole", std::string("AXButton")},
                              {"AXDescription", status},
                              {"AXTitle", status},
                              {"AXHelp", status},
                              {"AXDOMIdentifier", status}};
    desk.accessibility.setOutputOfFailedReads(std::string("Mute"));
    EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);

    microphone->attributes = button("Mute");
    app->attributes["AXChildren"] = status;
    desk.accessibility.setOutputOfFailedReads(std::vector<AccessibilityElementRef>{microphone});
    EXPECT_EQ(TeamsUI::currentMuteState(), std::nullopt);
    app->attributes.erase("AXChildren");
    EXPECT_EQ(TeamsUI::currentMuteState(), false);
  }
}

}  // namespace
}  // namespace hushbox
