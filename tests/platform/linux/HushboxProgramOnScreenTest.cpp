// The program itself on a desktop with a panel: what it shows, and clicks on it.

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "rehearsal/Desk.h"
#include "rehearsal/HushboxProcess.h"
#include "rehearsal/Panel.h"
#include "rehearsal/PowerDaemon.h"
#include "tests/platform/linux/fixtures/Picture.h"

namespace hushbox {
namespace {

using rehearsal::Desk;
using rehearsal::holdsWithin;
using rehearsal::HushboxProcess;
using rehearsal::ItemMenu;
using rehearsal::MeetingPage;
using rehearsal::Panel;
using rehearsal::PowerDaemon;
using rehearsal::serverTimeout;
using rehearsal::waitUntil;
using testing::ElementsAre;
using testing::EndsWith;

class HushboxProgramOnScreenTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    desk_ = std::make_unique<Desk>(
        Desk::Options{.display = true, .notifications = true, .systemBus = true});
    panel_ = std::make_unique<Panel>(desk_->session());
    if (PowerDaemon::isInstalled())
      power_ = std::make_unique<PowerDaemon>(desk_->session(), PowerDaemon::Battery{.percent = 84});
  }
  static void TearDownTestSuite() {
    power_.reset();
    panel_.reset();
    desk_.reset();
  }

  void SetUp() override {
    if (!power_) GTEST_SKIP() << "UPower or umockdev is not installed.";
    power_->change(84, "Discharging");
    desk_->accessibility().setEnabled(true);
    desk_->audio().plugSpeakerphone();
    program_.emplace(desk_->session(), HUSHBOX_PROGRAM);
    waitForToolTip("Hushbox: Not on a call");
  }
  void TearDown() override {
    if (!power_) return;
    if (HasFailure()) ADD_FAILURE() << "logged:\n" << program_->log();
    if (panel_->menu()) panel_->closeMenu();
    desk_->notificationDaemon().closeAll();
    program_.reset();
    call_.reset();
    meeting_.reset();
    desk_->audio().unplugSpeakerphone();
    waitUntil([] { return panel_->items().empty(); }, serverTimeout, "the item's end");
  }

  void startCall() {
    meeting_.emplace(desk_->browser());
    call_ = desk_->audio().record();
    waitForToolTip("Hushbox: On a call — live");
  }

  static void waitForToolTip(const std::string& text) {
    waitUntil([&] { return !panel_->items().empty() && panel_->toolTip() == text; }, serverTimeout,
              "the tool tip \"" + text + "\"");
  }
  static bool hasRow(const std::string& text) {
    return std::ranges::any_of(panel_->itemMenu().rows(),
                               [&](const ItemMenu::Row& row) { return row.text.ends_with(text); });
  }
  static void waitForRow(const std::string& text) {
    waitUntil([&] { return hasRow(text); }, serverTimeout, "the row \"" + text + "\"");
  }
  /// Waits for a row that a reading of the battery causes. On a busy machine a reading may time
  /// out, which warns of nothing and empties the battery's row; the next call has it read again.
  void waitForReading(const std::string& text) {
    // A reading is over after ten seconds.
    constexpr std::chrono::seconds maxReadingTime{12};
    for (int attempt = 0; attempt < 2; ++attempt) {
      if (holdsWithin([&] { return hasRow(text); }, maxReadingTime)) return;
      const bool wasOnACall = call_ != nullptr;
      call_.reset();
      waitForToolTip("Hushbox: Not on a call");
      call_ = desk_->audio().record();
      waitForToolTip("Hushbox: On a call — live");
      if (wasOnACall) continue;
      call_.reset();
      waitForToolTip("Hushbox: Not on a call");
    }
    waitForRow(text);
  }
  static std::vector<std::string> rowTexts() {
    std::vector<std::string> texts;
    for (const ItemMenu::Row& row : panel_->itemMenu().rows()) texts.push_back(row.text);
    return texts;
  }

  /// Takes a picture of the item with its open menu once the menu is drawn.
  static void pictureMenu(const std::string& name) {
    panel_->openMenu();
    panel_->movePointerAway();
    const Panel::Area menu = panel_->waitForMenu();
    waitUntil(
        [&] {
          const auto file = Picture::folder() / (name + ".png");
          panel_->picture({menu.x, 0, menu.width, menu.y + menu.height}, file);
          return Picture(file).standingOut() > 500;
        },
        serverTimeout, "the picture " + name);
    panel_->closeMenu();
  }

  static inline std::unique_ptr<Desk> desk_;
  static inline std::unique_ptr<Panel> panel_;
  static inline std::unique_ptr<PowerDaemon> power_;
  std::optional<HushboxProcess> program_;
  std::optional<MeetingPage> meeting_;
  std::unique_ptr<rehearsal::RecordingStream> call_;
};

TEST_F(HushboxProgramOnScreenTest, MenuShowsTheCallAndTheBattery) {
  waitForReading("Battery: 84%");
  pictureMenu("program-connected");
  EXPECT_THAT(rowTexts(), ElementsAre("Not on a call", "Battery: 84%", "Waiting for Jabra button…",
                                      "", "Launch at login", "", "Quit Hushbox"));
  startCall();
  desk_->audio().setVolume(0.0);
  waitForToolTip("Hushbox: On a call — muted");
  waitForRow("Mute → Teams");
  pictureMenu("program-muted-on-a-call");
  EXPECT_THAT(rowTexts(),
              ElementsAre("On a call — muted", "Battery: 84%", EndsWith("  Mute → Teams"), "",
                          "Launch at login", "", "Quit Hushbox"));
}

TEST_F(HushboxProgramOnScreenTest, CallOnALowBatteryShowsAWarning) {
  power_->change(21, "Discharging");
  // Beneath the panel, at the right edge.
  const Panel::Area corner{900, 32, 380, 118};
  const auto file = Picture::folder() / "program-low-battery.png";
  panel_->picture(corner, file);
  EXPECT_EQ(Picture(file).standingOut(), 0);
  startCall();
  waitForReading("Call started — battery 21%, notified");
  const auto shown = desk_->notifications().waitForShown(1);
  EXPECT_EQ(shown.back().title, "Jabra battery low: 21%");
  EXPECT_EQ(shown.back().body,
            "Your Speak2 75 is under 30%. Plug it in before the call runs long.");
  waitUntil([] { return desk_->notificationDaemon().shownNow() == 1; }, serverTimeout,
            "the warning");
  const bool seen = holdsWithin(
      [&] {
        panel_->picture(corner, file);
        return Picture(file).standingOut() > 5000;
      },
      serverTimeout);
  EXPECT_TRUE(seen);
}

TEST_F(HushboxProgramOnScreenTest, CallOnAChargingBatteryShowsNoWarning) {
  desk_->notifications().clear();
  power_->change(21, "Charging");
  startCall();
  waitForReading("Battery: 21% (charging)");
  // Enough time for a warning.
  rehearsal::letPass(std::chrono::milliseconds{500});
  EXPECT_TRUE(desk_->notifications().notifications().empty());
}

TEST_F(HushboxProgramOnScreenTest, ClicksOnTheToggleWriteAndRemoveTheEntry) {
  const auto entry =
      desk_->session().home() / ".config" / "autostart" / "org.hushbox.Hushbox.desktop";
  for (const bool on : {true, false}) {
    panel_->openMenu();
    panel_->chooseRow("Launch at login");
    waitUntil([&] { return panel_->itemMenu().row("Launch at login").on == on; }, serverTimeout,
              "the switch");
    EXPECT_EQ(std::filesystem::exists(entry), on);
  }
}

TEST_F(HushboxProgramOnScreenTest, ClickOnGrantAccessibilitySwitchesItOnAndRemovesTheRow) {
  desk_->accessibility().setEnabled(false);
  waitForRow("Grant Accessibility…");
  pictureMenu("program-without-permission");
  panel_->openMenu();
  panel_->chooseRow("Grant Accessibility…");
  waitUntil([] { return desk_->accessibility().isEnabled(); }, serverTimeout, "accessibility");
  waitUntil([] { return panel_->itemMenu().rows().size() == 7; }, serverTimeout, "the row's end");
  EXPECT_THAT(rowTexts(), testing::Not(testing::Contains("Grant Accessibility…")));
}

TEST_F(HushboxProgramOnScreenTest, ClickOnQuitEndsTheProgramWithZeroAndRemovesTheItem) {
  panel_->openMenu();
  panel_->chooseRow("Quit Hushbox");
  EXPECT_EQ(program_->waitForExit(), 0);
  waitUntil([] { return panel_->items().empty(); }, serverTimeout, "the item's end");
}

}  // namespace
}  // namespace hushbox
