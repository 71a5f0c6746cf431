#include "platform/simulated/SimulatedTeams.h"

#include <gmock/gmock.h>

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class SimulatedTeamsTest : public testing::Test {
 protected:
  std::string label() {
    AttributeValue value;
    EXPECT_EQ(tree.copyAttributeValue(teams.microphone(), "AXDescription", value), 0);
    return std::get<std::string>(value);
  }

  Journal journal;
  SimulatedMainLoop loop{journal};
  SimulatedAccessibilityTree tree{journal, loop};
  SimulatedWorkspace workspace{journal, loop};
  SimulatedTeams teams{loop, tree, workspace};
};

TEST_F(SimulatedTeamsTest, IsListedWhileItRuns) {
  EXPECT_TRUE(workspace.runningApplications().empty());
  teams.launch("com.microsoft.teams", 77);
  ASSERT_EQ(workspace.runningApplications().size(), 1U);
  EXPECT_EQ(workspace.runningApplications()[0].bundleIdentifier, "com.microsoft.teams");
  EXPECT_EQ(workspace.runningApplications()[0].processIdentifier, 77);
  EXPECT_EQ(teams.microphone(), nullptr);
  teams.quit();
  EXPECT_TRUE(workspace.runningApplications().empty());
  EXPECT_THAT(journal.take("workspace"),
              ElementsAre("applications:", "applications: 77", "applications: 77",
                          "applications: 77", "applications:"));
}

TEST_F(SimulatedTeamsTest, LabelFollowsPressesAndTheUser) {
  teams.joinMeeting();
  EXPECT_EQ(label(), "Mute mic (⌘+Shift+M)");
  EXPECT_EQ(tree.performAction(teams.microphone(), "AXPress"), 0);
  EXPECT_TRUE(teams.isMuted());
  EXPECT_EQ(label(), "Unmute mic (⌘+Shift+M)");
  teams.setMuted(false);
  EXPECT_EQ(label(), "Mute mic (⌘+Shift+M)");
  EXPECT_EQ(teams.pressCount(), 1U);
}

TEST_F(SimulatedTeamsTest, LabelMayChangeAfterADelay) {
  teams.joinMeeting();
  teams.setPressLatency(0.05s);
  EXPECT_EQ(tree.performAction(teams.microphone(), "AXPress"), 0);
  loop.advance(0.049s);
  EXPECT_EQ(label(), SimulatedTeams::muteLabel);
  loop.advance(0.001s);
  EXPECT_EQ(label(), SimulatedTeams::unmuteLabel);
}

TEST_F(SimulatedTeamsTest, PressLastsUntilTheApplicationHasHandledIt) {
  teams.joinMeeting();
  teams.setPressDuration(0.05s);
  const Instant before = loop.now();
  EXPECT_EQ(tree.performAction(teams.microphone(), "AXPress"), 0);
  EXPECT_EQ(loop.now() - before, 50ms);
  EXPECT_EQ(label(), SimulatedTeams::unmuteLabel);
}

TEST_F(SimulatedTeamsTest, LabelMayChangeAfterAPressThatTimedOut) {
  teams.joinMeeting();
  tree.setMessagingTimeout(teams.application(), 1.0F);
  teams.setPressDuration(1.05s);
  const Instant before = loop.now();
  EXPECT_EQ(tree.performAction(teams.microphone(), "AXPress"), 0);
  EXPECT_EQ(loop.now() - before, 1s);
  loop.advance(0.049s);
  EXPECT_EQ(label(), SimulatedTeams::muteLabel);
  loop.advance(0.001s);
  EXPECT_EQ(label(), SimulatedTeams::unmuteLabel);
}

TEST_F(SimulatedTeamsTest, FailedPressChangesNothing) {
  teams.joinMeeting(true);
  teams.setPressStatus(accessibility::cannotComplete);
  EXPECT_EQ(tree.performAction(teams.microphone(), "AXPress"), accessibility::cannotComplete);
  EXPECT_EQ(tree.performAction(teams.microphone(), "AXShowMenu"), accessibility::actionUnsupported);
  EXPECT_TRUE(teams.isMuted());
  EXPECT_EQ(teams.pressCount(), 0U);
}

TEST_F(SimulatedTeamsTest, EachMeetingHasItsOwnWindow) {
  teams.joinMeeting();
  const auto button = teams.microphone();
  teams.leaveMeeting();
  AttributeValue value;
  EXPECT_EQ(tree.copyAttributeValue(button, "AXRole", value), accessibility::invalidElement);
  EXPECT_EQ(teams.application()->children.size(), 1U);
  teams.joinMeeting(true);
  EXPECT_NE(teams.microphone(), button);
  EXPECT_EQ(label(), SimulatedTeams::unmuteLabel);
}

}  // namespace
}  // namespace hushbox
