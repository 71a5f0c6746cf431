#include "app/MenuContent.h"

#include <gtest/gtest.h>

#include <optional>

#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {
namespace {

/// The menu on the simulated desk, shown in the menu bar so that tests compare what a user reads.
class MenuContentTest : public testing::Test {
 protected:
  MenuContent& menu() {
    if (!coordinator_) coordinator_.emplace();
    if (!menu_) menu_.emplace(*coordinator_);
    return *menu_;
  }

  Lines shown() {
    desk.menuBar.setRows(menu().rows());
    return desk.menuBar.rowLines();
  }

  std::string firstRow() { return shown().front(); }

  void startCall() {
    const AudioObjectID device = desk.plugSpeakerphone();
    menu();
    desk.audio.setRunning(device, true);
    desk.loop.runUntilIdle();
  }

  void battery(int level, const std::string& state) {
    desk.setBattery(level, state);
    menu();
    desk.advance(TimeInterval{0.9});
  }

  SimulatedDesk desk;
  std::optional<MuteCoordinator> coordinator_;
  std::optional<MenuContent> menu_;
};

TEST_F(MenuContentTest, OmitsRowsThatAreUnknownOrNotNeeded) {
  EXPECT_EQ(shown(), (Lines{"(Jabra not connected)", "(Waiting for Jabra button…)", "---",
                            "[ ] Launch at login", "---", "Quit Hushbox (key q)"}));
}

TEST_F(MenuContentTest, HasSevenRowsOnceAccessibilityIsGranted) {
  battery(62, "discharging");
  EXPECT_EQ(shown(),
            (Lines{"(Jabra not connected)", "(Battery: 62%)", "(Waiting for Jabra button…)", "---",
                   "[ ] Launch at login", "---", "Quit Hushbox (key q)"}));
}

TEST_F(MenuContentTest, ShowsEveryRowInOrder) {
  desk.accessibility.setTrusted(false);
  desk.loginItem.setStatus(LoginItem::Status::enabled);
  battery(42, "charging");
  EXPECT_EQ(shown(), (Lines{"(Jabra not connected)", "(Battery: 42% (charging))",
                            "(Waiting for Jabra button…)", "---", "Grant Accessibility…",
                            "[x] Launch at login", "---", "Quit Hushbox (key q)"}));
}

TEST_F(MenuContentTest, FirstRowSaysWhetherACallIsLiveOrMuted) {
  const AudioObjectID device = desk.plugSpeakerphone(0.0F);
  EXPECT_EQ(firstRow(), "(Not on a call)");
  desk.audio.setRunning(device, true);
  desk.loop.runUntilIdle();
  EXPECT_EQ(firstRow(), "(On a call — muted)");
  desk.audio.setInputVolume(device, 0.5F);
  desk.loop.runUntilIdle();
  EXPECT_EQ(firstRow(), "(On a call — live)");
}

TEST_F(MenuContentTest, FirstRowSaysNotConnectedInAnyMuteState) {
  const AudioObjectID device = desk.plugSpeakerphone(0.0F);
  menu();
  desk.audio.setRunning(device, true);
  desk.audio.unplug(device);
  desk.loop.runUntilIdle();
  EXPECT_EQ(firstRow(), "(Jabra not connected)");
}

TEST_F(MenuContentTest, ShowsABatteryLevelOfZero) {
  battery(0, "discharging");
  EXPECT_EQ(shown()[1], "(Battery: 0%)");
}

TEST_F(MenuContentTest, OmitsTheBatteryWhileItsLevelIsUnknown) {
  EXPECT_EQ(shown()[1], "(Waiting for Jabra button…)");
}

TEST_F(MenuContentTest, ReadsThePermissionEachTimeItIsBuilt) {
  desk.accessibility.setTrusted(false);
  EXPECT_EQ(shown().size(), 7U);
  desk.accessibility.setTrusted(true);
  EXPECT_EQ(shown().size(), 6U);
}

TEST_F(MenuContentTest, DoesNotLocaliseTheStatusLine) {
  desk.accessibility.setTrusted(false);
  battery(50, "discharging");
  std::vector<bool> localized;
  for (const MenuRow& row : menu().rows()) {
    if (row.kind != MenuRow::Kind::separator) localized.push_back(row.localized);
  }
  EXPECT_EQ(localized, (std::vector<bool>{true, true, false, true, true, true}));
}

TEST_F(MenuContentTest, GrantAccessibilityPromptsTheUser) {
  desk.accessibility.setTrusted(false);
  shown();
  ASSERT_TRUE(desk.menuBar.choose("Grant Accessibility…"));
  EXPECT_EQ(desk.accessibility.promptCount(), 1U);
}

TEST_F(MenuContentTest, QuitTerminatesTheApplication) {
  shown();
  ASSERT_TRUE(desk.menuBar.choose("Quit Hushbox"));
  EXPECT_EQ(desk.loop.run(), 0);
}

TEST_F(MenuContentTest, SwitchReadsTheSystemsStateOnlyAtFirst) {
  desk.loginItem.setStatus(LoginItem::Status::enabled);
  shown();
  desk.loginItem.setStatus(LoginItem::Status::notRegistered);
  EXPECT_TRUE(menu().launchAtLogin());
}

TEST_F(MenuContentTest, SwitchIsOffWhileApprovalIsRequired) {
  desk.loginItem.setStatus(LoginItem::Status::requiresApproval);
  EXPECT_FALSE(menu().launchAtLogin());
}

TEST_F(MenuContentTest, SwitchRegistersAndUnregisters) {
  shown();
  desk.journal.take();
  desk.menuBar.choose("Launch at login");
  EXPECT_TRUE(menu().launchAtLogin());
  shown();
  desk.menuBar.choose("Launch at login");
  EXPECT_FALSE(menu().launchAtLogin());
  EXPECT_EQ(desk.journal.lines("login"), (Lines{"register -> true", "unregister -> true"}));
}

TEST_F(MenuContentTest, RefusedRegistrationRevertsTheSwitchAndUnregisters) {
  desk.loginItem.setRefusesRegistration(true);
  shown();
  desk.journal.take();
  desk.menuBar.choose("Launch at login");
  EXPECT_FALSE(menu().launchAtLogin());
  EXPECT_EQ(desk.journal.lines("login"),
            (Lines{"register -> false", "status -> 0", "unregister -> true"}));
}

TEST_F(MenuContentTest, RefusedUnregistrationRevertsTheSwitchAndRegisters) {
  desk.loginItem.setStatus(LoginItem::Status::enabled);
  desk.loginItem.setRefusesUnregistration(true);
  shown();
  desk.journal.take();
  desk.menuBar.choose("Launch at login");
  EXPECT_TRUE(menu().launchAtLogin());
  EXPECT_EQ(desk.journal.lines("login"),
            (Lines{"unregister -> false", "status -> 1", "register -> true"}));
}

TEST_F(MenuContentTest, RefusedChangeToTheSystemsStateIsNotReverted) {
  desk.loginItem.setStatus(LoginItem::Status::enabled);
  shown();
  desk.loginItem.setStatus(LoginItem::Status::notRegistered);
  desk.loginItem.setRefusesUnregistration(true);
  desk.journal.take();
  desk.menuBar.choose("Launch at login");
  EXPECT_FALSE(menu().launchAtLogin());
  EXPECT_EQ(desk.journal.lines("login"), (Lines{"unregister -> false", "status -> 0"}));
}

TEST_F(MenuContentTest, SwitchGivesUpAfterFourChangesThatTheSystemContradicts) {
  desk.loginItem.setContradictsEveryChange();
  shown();
  desk.journal.take();
  desk.menuBar.choose("Launch at login");
  EXPECT_EQ(desk.journal.lines("login"),
            (Lines{"register -> false", "status -> 0", "unregister -> false", "status -> 1",
                   "register -> false", "status -> 0", "unregister -> false", "status -> 1"}));
  EXPECT_TRUE(menu().launchAtLogin());
}

TEST_F(MenuContentTest, ChangesOfTheSwitchAreAnnouncedBeforeTheyHappen) {
  std::vector<bool> heard;
  const auto subscription =
      menu().objectWillChange.subscribe([&] { heard.push_back(menu().launchAtLogin()); });
  shown();
  desk.menuBar.choose("Launch at login");
  EXPECT_EQ(heard, std::vector<bool>{false});
}

TEST_F(MenuContentTest, RowsThatOutliveTheMenuDoNothing) {
  desk.accessibility.setTrusted(false);
  shown();
  menu_.reset();
  desk.menuBar.choose("Grant Accessibility…");
  desk.menuBar.choose("Launch at login");
  EXPECT_EQ(desk.accessibility.promptCount(), 0U);
  EXPECT_EQ(desk.loginItem.status(), LoginItem::Status::notRegistered);
}

}  // namespace
}  // namespace hushbox
