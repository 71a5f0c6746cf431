// What the program asks of the Mac for a poll, a press and a search: the price of a second.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "coordinator/MuteCoordinator.h"
#include "teams/TeamsUI.h"
#include "tests/platform/macos/MacAdapters.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/MacTeams.h"

namespace hushbox {
namespace {

class PlatformCallsTest : public MacFixture, protected MacAdapters {
 protected:
  MacTeams teams;
  AudioObjectID speakerphone = doubles::plug({.name = "Jabra Speak2 75", .running = 1});

  void SetUp() override { doubles::scriptTask("/usr/bin/pmset", {"-g", "accps"}, {}); }
};

/// One reading with the button known: trust, the application, its time-out and switches, and the
/// button's role, identifier and four labels.
const std::map<std::string, int> reading{
    {"AXIsProcessTrusted", 1},           {"runningApplications", 1},
    {"AXUIElementCreateApplication", 1}, {"AXUIElementSetMessagingTimeout", 1},
    {"AXUIElementSetAttributeValue", 2}, {"AXUIElementCopyAttributeValue", 6}};

TEST_F(PlatformCallsTest, PollWithoutACallAsksNothing) {
  doubles::setRunning(speakerphone, false);
  const MuteCoordinator coordinator;
  advance(TimeInterval(1.5));
  doubles::resetCalls();
  advance(TimeInterval(1));
  EXPECT_TRUE(doubles::calls().empty());
}

TEST_F(PlatformCallsTest, PollWithTheCachedButtonCostsTheReadingAndNoMore) {
  teams.joinMeeting(false);
  const MuteCoordinator coordinator;
  advance(TimeInterval(1.5));
  ASSERT_EQ(coordinator.teamsMuted(), false);
  doubles::resetCalls();
  advance(TimeInterval(1));
  EXPECT_EQ(doubles::calls(), reading);
}

TEST_F(PlatformCallsTest, PressWithTheCachedButtonCostsTheReadingAndThePress) {
  teams.joinMeeting(false);
  const MuteCoordinator coordinator;
  advance(TimeInterval(1.1));
  doubles::resetCalls();
  doubles::setInputVolume(speakerphone, 0);
  advance(TimeInterval(0.4));
  EXPECT_EQ(teams.pressCount(), 1U);
  auto press = reading;
  press["AXUIElementPerformAction"] = 1;
  press["AudioObjectGetPropertyData"] = 1;
  EXPECT_EQ(doubles::calls(), press);
}

TEST_F(PlatformCallsTest, SearchCostsTwoReadsAndATimeoutAnElementBesideTheButtons) {
  teams.joinMeeting(false);
  doubles::resetCalls();
  EXPECT_EQ(TeamsUI::currentMuteState(), false);
  // Six elements: the application and two windows, the toolbar, the camera's button and the
  // microphone's. Each costs its role, a button its identifier and labels too, and all but the
  // microphone's their children.
  auto search = reading;
  search["AXUIElementSetMessagingTimeout"] = 6;
  search["AXUIElementCopyAttributeValue"] = 6 + 2 * 5 + 5;
  EXPECT_EQ(doubles::calls(), search);
}

}  // namespace
}  // namespace hushbox
