// How many system calls a poll, a press and a search make.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "coordinator/MuteCoordinator.h"
#include "platform/macos/MacPlatform.h"
#include "teams/TeamsUI.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/MacTeams.h"

namespace hushbox {
namespace {

class PlatformCallsTest : public MacFixture, protected MacPlatform {
 protected:
  MacTeams teams;
  AudioObjectID speakerphone = doubles::plug({.name = "Jabra Speak2 75", .running = 1});

  void SetUp() override { doubles::scriptTask("/usr/bin/pmset", {"-g", "accps"}, {}); }
};

/// One reading with a cached button: trust, the application, its timeout and switches, and the
/// button's role, identifier and four labels.
const std::map<std::string, int> reading{
    {"AXIsProcessTrusted", 1},           {"runningApplications", 1},
    {"AXUIElementCreateApplication", 1}, {"AXUIElementSetMessagingTimeout", 1},
    {"AXUIElementSetAttributeValue", 2}, {"AXUIElementCopyAttributeValue", 6}};

TEST_F(PlatformCallsTest, PollOffACallMakesNoSystemCall) {
  doubles::setRunning(speakerphone, false);
  const MuteCoordinator coordinator;
  advance(TimeInterval(1.5));
  doubles::resetCalls();
  advance(TimeInterval(1));
  EXPECT_TRUE(doubles::calls().empty());
}

TEST_F(PlatformCallsTest, PollWithTheCachedButtonCostsOneReading) {
  teams.joinMeeting(false);
  const MuteCoordinator coordinator;
  advance(TimeInterval(1.5));
  ASSERT_EQ(coordinator.teamsMuted(), false);
  doubles::resetCalls();
  advance(TimeInterval(1));
  EXPECT_EQ(doubles::calls(), reading);
}

TEST_F(PlatformCallsTest, PressWithTheCachedButtonCostsOneReadingAndThePress) {
  teams.joinMeeting(false);
  const MuteCoordinator coordinator;
  advance(TimeInterval(1.1));
  doubles::resetCalls();
  doubles::setInputVolume(speakerphone, 0);
  advance(TimeInterval(0.4));
  EXPECT_EQ(teams.pressCount(), 1U);
  auto press = reading;
  press["AXUIElementPerformAction"] = 1;
  // What the button shows before and after the press.
  press["AXUIElementCopyAttributeValue"] += 2 * 4;
  press["AudioObjectGetPropertyData"] = 1;
  EXPECT_EQ(doubles::calls(), press);
}

TEST_F(PlatformCallsTest, SearchCostsTwoReadsAndATimeoutPerElement) {
  teams.joinMeeting(false);
  doubles::resetCalls();
  EXPECT_EQ(TeamsUI::currentMuteState(), false);
  // Six elements: the application and two windows, the toolbar, the camera's button and the
  // microphone's. For each it reads the role, for a button also the identifier and labels, and for
  // all but the microphone's the children.
  auto search = reading;
  search["AXUIElementSetMessagingTimeout"] = 6;
  search["AXUIElementCopyAttributeValue"] = 6 + 2 * 5 + 5;
  EXPECT_EQ(doubles::calls(), search);
}

}  // namespace
}  // namespace hushbox
