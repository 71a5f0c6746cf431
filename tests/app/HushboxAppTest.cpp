#include "app/HushboxApp.h"

#include <gtest/gtest.h>

#include <optional>

#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {
namespace {

class HushboxAppTest : public testing::Test {
 protected:
  void build() {
    app_.emplace();
    app_->buildScene();
  }

  SimulatedDesk desk;
  std::optional<HushboxApp> app_;
};

TEST_F(HushboxAppTest, CreatesNoCoordinatorBeforeTheSceneIsBuilt) {
  app_.emplace();
  EXPECT_EQ(desk.journal.callCount(), 0U);
}

TEST_F(HushboxAppTest, ShowsIconAndMenuAtOnce) {
  build();
  EXPECT_EQ(desk.menuBar.description(), "Hushbox: Jabra not connected");
  EXPECT_TRUE(desk.menuBar.icon().isTemplate);
  EXPECT_EQ(desk.menuBar.rows().size(), 6U);
}

TEST_F(HushboxAppTest, MainRunsUntilAskedToTerminateAndReturnsZero) {
  desk.loop.after(TimeInterval{2.5}, [this] { desk.menuBar.choose("Quit Hushbox"); });
  EXPECT_EQ(HushboxApp::main(), 0);
  EXPECT_TRUE(desk.loop.terminated());
}

TEST_F(HushboxAppTest, IconFollowsConnectionCallAndMuteState) {
  build();
  const AudioObjectID device = desk.plugSpeakerphone();
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.menuBar.description(), "Hushbox: Not on a call");
  EXPECT_TRUE(desk.menuBar.icon().isTemplate);
  desk.audio.setRunning(device, true);
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.menuBar.description(), "Hushbox: On a call — live");
  EXPECT_FALSE(desk.menuBar.icon().isTemplate);
  desk.audio.pressMuteButton(device);
  desk.advance(TimeInterval{0.3});
  EXPECT_EQ(desk.menuBar.description(), "Hushbox: On a call — muted");
}

TEST_F(HushboxAppTest, HoldsOneActivityWhileTheSpeakerphoneIsInUse) {
  const AudioObjectID device = desk.plugSpeakerphone();
  build();
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.loop.activityCount(), 0);
  desk.audio.setRunning(device, true);
  desk.advance(TimeInterval{5.0});
  EXPECT_EQ(desk.loop.activityCount(), 1);
  desk.audio.setRunning(device, false);
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.loop.activityCount(), 0);
}

TEST_F(HushboxAppTest, EndsItsActivityWhenTheSpeakerphoneIsUnplugged) {
  const AudioObjectID device = desk.plugSpeakerphone();
  desk.audio.setRunning(device, true);
  build();
  EXPECT_EQ(desk.loop.activityCount(), 1);
  desk.audio.unplug(device);
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.loop.activityCount(), 0);
}

TEST_F(HushboxAppTest, ChangesInOneTurnCauseOneRedrawAfterwards) {
  const AudioObjectID device = desk.plugSpeakerphone();
  build();
  desk.loop.runUntilIdle();
  const std::size_t icons = desk.menuBar.iconCount();
  const std::size_t menus = desk.menuBar.rowsCount();
  desk.journal.take();
  // Unplugging announces three changes: name, mute state and call state.
  desk.audio.unplug(device);
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.journal.lines("loop"), Lines{"post"});
  EXPECT_EQ(desk.menuBar.iconCount(), icons + 1);
  EXPECT_EQ(desk.menuBar.rowsCount(), menus + 1);
  EXPECT_EQ(desk.menuBar.description(), "Hushbox: Jabra not connected");
}

TEST_F(HushboxAppTest, UnchangedIconAndMenuAreNotShownAgain) {
  desk.plugSpeakerphone();
  build();
  desk.advance(TimeInterval{1.0});
  const std::size_t icons = desk.menuBar.iconCount();
  const std::size_t menus = desk.menuBar.rowsCount();
  // Outside a call the poll announces a change once per second.
  desk.advance(TimeInterval{30.0});
  EXPECT_EQ(desk.menuBar.iconCount(), icons);
  EXPECT_EQ(desk.menuBar.rowsCount(), menus);
}

TEST_F(HushboxAppTest, BatteryChangesTheMenuButNotTheIcon) {
  build();
  desk.loop.runUntilIdle();
  const std::size_t icons = desk.menuBar.iconCount();
  desk.setBattery(61);
  desk.advance(TimeInterval{60.5});
  EXPECT_EQ(desk.menuBar.rowLines()[1], "(Battery: 61%)");
  EXPECT_EQ(desk.menuBar.iconCount(), icons);
}

TEST_F(HushboxAppTest, GrantButtonDisappearsWithinASecondOfTheGrant) {
  desk.accessibility.setTrusted(false);
  build();
  EXPECT_TRUE(desk.menuBar.choose("Grant Accessibility…"));
  desk.accessibility.setTrusted(true);
  desk.advance(TimeInterval{1.0});
  EXPECT_FALSE(desk.menuBar.choose("Grant Accessibility…"));
}

TEST_F(HushboxAppTest, SwitchIsRedrawnWhenItReverts) {
  desk.loginItem.setRefusesRegistration(true);
  build();
  desk.menuBar.choose("Launch at login");
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.menuBar.rowLines()[3], "[ ] Launch at login");
  desk.loginItem.setRefusesRegistration(false);
  desk.menuBar.choose("Launch at login");
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.menuBar.rowLines()[3], "[x] Launch at login");
}

TEST_F(HushboxAppTest, PendingRedrawDoesNothingAfterDestruction) {
  build();
  desk.loop.runUntilIdle();
  desk.menuBar.choose("Launch at login");
  app_.reset();
  desk.journal.take();
  desk.loop.runUntilIdle();
  EXPECT_EQ(desk.journal.take(), Lines{});
}

TEST_F(HushboxAppTest, ChoosingARowAfterDestructionDoesNothing) {
  build();
  app_.reset();
  EXPECT_TRUE(desk.menuBar.choose("Launch at login"));
  EXPECT_EQ(desk.journal.lines("login"), Lines{"status -> 0"});
}

}  // namespace
}  // namespace hushbox
