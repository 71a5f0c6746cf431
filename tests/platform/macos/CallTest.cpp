// A call on the doubles: from the press of the speakerphone's button to Teams and back, and what a
// person sees.

#include <gmock/gmock.h>

#include <algorithm>
#include <optional>

#include "tests/platform/macos/MacTeams.h"
#include "tests/platform/macos/ProgramOnMac.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

class CallTest : public MacFixture {
 protected:
  CallTest() {
    doubles::trusted = true;
    setBattery(62);
    meeting.joinMeeting();
    speakerphone = doubles::plug({.name = "Jabra Speak2 75", .inputVolume = 0.8F, .running = 1});
    program.emplace();
    program->app.buildScene();
    advance(1200ms);
  }

  /// Background readings hold parts of the program, so let them end first.
  ~CallTest() override {
    settle();
    program.reset();
  }

  static std::vector<std::string> statusLines() {
    std::vector<std::string> lines;
    for (const auto& record : doubles::logRecords())
      if (record.category == "coordinator") lines.push_back(record.text);
    return lines;
  }

  MacTeams meeting;
  std::uint32_t speakerphone = 0;
  std::optional<ProgramOnMac> program;
};

TEST_F(CallTest, LastingDropPressesTeamsOnceAfterTheBounceWindow) {
  doubles::setInputVolume(speakerphone, 0);
  advance(290ms);
  EXPECT_EQ(meeting.pressCount(), 0U);
  advance(20ms);
  EXPECT_EQ(meeting.pressCount(), 1U);
  EXPECT_TRUE(meeting.isMuted());
  advance(10s);
  EXPECT_EQ(meeting.pressCount(), 1U);
  EXPECT_THAT(statusLines(), Contains(HasSubstr("Mute → Teams")));
  EXPECT_THAT(doubles::calls(), Contains(testing::Pair("AXUIElementPerformAction", 1)));
}

TEST_F(CallTest, ReturningVolumeUnmutesTeams) {
  doubles::setInputVolume(speakerphone, 0);
  advance(1s);
  doubles::setInputVolume(speakerphone, 0.8F);
  advance(1s);
  EXPECT_EQ(meeting.pressCount(), 2U);
  EXPECT_FALSE(meeting.isMuted());
}

TEST_F(CallTest, VolumeRestoredWithinTheWindowPressesOnce) {
  doubles::setInputVolume(speakerphone, 0);
  advance(100ms);
  doubles::setInputVolume(speakerphone, 0.8F);
  advance(3s);
  EXPECT_EQ(meeting.pressCount(), 1U);
  EXPECT_TRUE(meeting.isMuted());
}

// A poll once a second and 100 ms of late label: one press in ten unmuted the speakerphone again.
TEST_F(CallTest, PollAfterAPressDoesNotReadTheOldLabel) {
  meeting.setLabelDelay(300ms);
  // The press comes 5 ms before a poll.
  advance(495ms);
  doubles::setInputVolume(speakerphone, 0);
  advance(3s);
  EXPECT_EQ(meeting.pressCount(), 1U);
  EXPECT_EQ(doubles::device(speakerphone).inputVolume, 0.0F);
  EXPECT_THAT(statusLines(), testing::Not(Contains(HasSubstr("→ Jabra"))));
}

TEST_F(CallTest, PressIsRecognisedInTimeAfterAnHourInTheBackground) {
  doubles::setNapping(true);
  advance(1h);
  doubles::setInputVolume(speakerphone, 0);
  advance(310ms);
  EXPECT_EQ(meeting.pressCount(), 1U);
  meeting.setMuted(false);
  advance(1100ms);
  EXPECT_EQ(doubles::device(speakerphone).inputVolume, 0.8F);
}

TEST_F(CallTest, ProgramMayNapWhileTheSpeakerphoneIsNotInUse) {
  EXPECT_EQ(doubles::activities().size(), 1U);
  doubles::setRunning(speakerphone, false);
  advance(1s);
  EXPECT_TRUE(doubles::activities().empty());
  doubles::setNapping(true);
  advance(1h);
  doubles::setRunning(speakerphone, true);
  settle();
  EXPECT_EQ(doubles::activities().size(), 1U);
  doubles::unplug(speakerphone);
  settle();
  EXPECT_TRUE(doubles::activities().empty());
}

TEST_F(CallTest, SpeakerphoneFollowsAChangeMadeInTeamsWithoutAnEcho) {
  meeting.setMuted(true);
  advance(1100ms);
  EXPECT_EQ(doubles::device(speakerphone).inputVolume, 0.0F);
  advance(3s);
  meeting.setMuted(false);
  advance(1100ms);
  EXPECT_EQ(doubles::device(speakerphone).inputVolume, 0.8F);
  advance(3s);
  EXPECT_EQ(meeting.pressCount(), 0U);
}

TEST_F(CallTest, PollGoesOnWhileTheMenuIsOpenAndItsRowsChangeInPlace) {
  doubles::openMenu();
  EXPECT_EQ(rowTitles().front(), "On a call — live");
  meeting.setMuted(true);
  advance(1100ms);
  EXPECT_EQ(doubles::device(speakerphone).inputVolume, 0.0F);
  EXPECT_EQ(rowTitles().front(), "On a call — muted");
  EXPECT_EQ(doubles::accessibilityLabel(), "Hushbox: On a call — muted");
  EXPECT_TRUE(doubles::isMenuOpen());
  doubles::closeMenu();
}

TEST_F(CallTest, MenuShowsTheState) {
  EXPECT_THAT(rowTitles(),
              ElementsAre("On a call — live", "Battery: 62%", "Waiting for Jabra button…", "---",
                          "Launch at login", "---", "Quit Hushbox"));
  doubles::setShortTime("10:42");
  doubles::setInputVolume(speakerphone, 0);
  advance(400ms);
  EXPECT_EQ(rowTitles()[0], "On a call — muted");
  EXPECT_EQ(rowTitles()[2], "10:42  Mute → Teams");
  doubles::setRunning(speakerphone, false);
  advance(100ms);
  EXPECT_EQ(rowTitles()[0], "Not on a call");
  doubles::unplug(speakerphone);
  advance(100ms);
  EXPECT_EQ(rowTitles()[0], "Jabra not connected");
}

TEST_F(CallTest, EveryLineButTheStatusIsTranslated) {
  doubles::setLocalization("On a call — muted", "Im Gespräch – stumm");
  doubles::setLocalization("9:41 AM  Mute → Teams", "translated");
  doubles::setInputVolume(speakerphone, 0);
  advance(400ms);
  EXPECT_EQ(rowTitles()[0], "Im Gespräch – stumm");
  EXPECT_EQ(rowTitles()[2], "9:41 AM  Mute → Teams");
}

TEST_F(CallTest, IconIsRedAndSlashedWhenMutedInACallAndGreenWhenLive) {
  ASSERT_TRUE(doubles::renderIcon());
  EXPECT_THAT(doubles::drawing(), Contains("fill color systemGreen"));
  EXPECT_THAT(doubles::drawing(), testing::Not(Contains("blend clear")));
  doubles::setInputVolume(speakerphone, 0);
  advance(400ms);
  ASSERT_TRUE(doubles::renderIcon());
  EXPECT_THAT(doubles::drawing(), Contains("fill color systemRed"));
  EXPECT_THAT(doubles::drawing(), Contains("blend clear"));
}

TEST_F(CallTest, MenuRequestsMissingPermission) {
  doubles::trusted = false;
  doubles::setInputVolume(speakerphone, 0);
  advance(400ms);
  EXPECT_EQ(meeting.pressCount(), 0U);
  EXPECT_THAT(rowTitles()[2], HasSubstr("Mute — grant Accessibility to Hushbox"));
  const std::size_t asked = doubles::prompts.size();
  doubles::chooseMenuItem("Grant Accessibility…");
  advance(10ms);
  ASSERT_EQ(doubles::prompts.size(), asked + 1);
  EXPECT_TRUE(doubles::prompts.back());
}

TEST_F(CallTest, SwitchesLaunchAtLoginInTheSystem) {
  doubles::chooseMenuItem("Launch at login");
  advance(10ms);
  EXPECT_EQ(doubles::serviceStatus(), 1);
  EXPECT_TRUE(doubles::menuItems()[4].on);
  doubles::chooseMenuItem("Launch at login");
  advance(10ms);
  EXPECT_EQ(doubles::serviceStatus(), 0);
  EXPECT_FALSE(doubles::menuItems()[4].on);
  doubles::refuseServiceChanges();
  doubles::chooseMenuItem("Launch at login");
  advance(10ms);
  EXPECT_EQ(doubles::serviceStatus(), 0);
  EXPECT_FALSE(doubles::menuItems()[4].on);
}

TEST_F(CallTest, NotifiesOfALowBatteryWhenACallStarts) {
  EXPECT_THAT(doubles::notifications(), testing::IsEmpty());
  doubles::setRunning(speakerphone, false);
  setBattery(29);
  advance(1s);
  doubles::setRunning(speakerphone, true);
  advance(1s);
  ASSERT_EQ(doubles::notifications().size(), 1U);
  EXPECT_EQ(doubles::notifications()[0].title, "Jabra battery low: 29%");
  EXPECT_TRUE(doubles::notifications()[0].defaultSound);
  EXPECT_EQ(doubles::authorizationOptions(), 6U);
}

TEST_F(CallTest, SpeakerphoneWorksAgainAfterItIsPluggedInAgain) {
  doubles::unplug(speakerphone);
  advance(10s);
  speakerphone = doubles::plug({.name = "Jabra Speak2 75", .inputVolume = 0.8F, .running = 1});
  advance(10s);
  doubles::setInputVolume(speakerphone, 0);
  advance(1s);
  EXPECT_EQ(meeting.pressCount(), 1U);
}

TEST_F(CallTest, PowerManagementToolThatHangsHoldsTwoChildren) {
  doubles::setRunning(speakerphone, false);
  doubles::scriptTask("/usr/bin/pmset", {"-g", "accps"}, {.output = {}, .hangs = true});
  advance(180s);
  const std::size_t launched = doubles::launchedTasks();
  const long before = doubles::liveObjects();
  advance(1h);
  EXPECT_EQ(doubles::launchedTasks(), launched);
  EXPECT_EQ(doubles::liveObjects(), before) << doubles::describeLiveObjects();
  setBattery(62);
  doubles::endHangingTasks();
}

TEST_F(CallTest, HourOfCallsLeavesNothingBehind) {
  const auto day = [this] {
    doubles::setRunning(speakerphone, true);
    advance(2min);
    doubles::setInputVolume(speakerphone, 0);
    advance(1min);
    doubles::openMenu();
    doubles::setInputVolume(speakerphone, 0.8F);
    advance(1min);
    doubles::closeMenu();
    meeting.setMuted(true);
    advance(1min);
    meeting.setMuted(false);
    advance(1min);
    doubles::setRunning(speakerphone, false);
    doubles::unplug(speakerphone);
    advance(2min);
    speakerphone = doubles::plug({.name = "Jabra Speak2 75", .inputVolume = 0.8F});
    ASSERT_TRUE(doubles::renderIcon());
    advance(2min);
  };
  day();
  const long objects = doubles::liveObjects();
  const long blocks = doubles::liveBlocks();
  const std::size_t pools = doubles::undrainedPools();
  const std::size_t timers = doubles::timerCount();
  for (int i = 0; i < 6; ++i) day();
  EXPECT_EQ(doubles::liveObjects(), objects) << doubles::describeLiveObjects();
  EXPECT_EQ(doubles::liveBlocks(), blocks);
  EXPECT_EQ(doubles::undrainedPools(), pools);
  EXPECT_EQ(doubles::timerCount(), timers);
}

TEST_F(CallTest, LongCallLeavesNothingBehind) {
  const auto change = [this] {
    doubles::setInputVolume(speakerphone, 0);
    advance(1s);
    doubles::setInputVolume(speakerphone, 0.8F);
    advance(60s);
  };
  change();
  const long before = doubles::liveObjects();
  for (int i = 0; i < 5; ++i) change();
  EXPECT_EQ(doubles::liveObjects(), before) << doubles::describeLiveObjects();
}

}  // namespace
}  // namespace hushbox
