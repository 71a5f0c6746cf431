#include "rehearsal/RehearsedCall.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <utility>
#include <vector>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {
namespace {

using Clock = std::chrono::system_clock;

/// In percent; Hushbox warns below 30.
constexpr int lowBattery = 21;

std::string milliseconds(Clock::duration span) {
  return std::to_string(std::chrono::round<Milliseconds>(span).count()) + " ms";
}

std::string quoted(const std::string& text) {
  return '"' + text + '"';
}

std::string describe(const ItemMenu::Row& row) {
  if (row.separator) return "----";
  if (row.isSwitch) return (row.on ? "[x] " : "[ ] ") + row.text;
  return row.enabled ? row.text : '(' + row.text + ')';
}

}  // namespace

RehearsedCall::RehearsedCall(std::string program)
    : program_(std::move(program)),
      desk_({.display = true, .headlessBrowser = false, .notifications = true, .systemBus = true}),
      panel_(desk_.session()),
      power_(desk_.session()) {}

std::string RehearsedCall::startHushbox() {
  hushbox_.emplace(desk_.session(), program_);
  return "Hushbox: " + hushbox_->waitForLog("Notification permission");
}

std::string RehearsedCall::findItem() {
  panel_.waitForItem();
  return "panel: one item with the tool tip " + quoted(panel_.toolTip());
}

std::string RehearsedCall::plugIn() {
  desk_.audio().plugSpeakerphone();
  return "Hushbox: " + hushbox_->waitForLog("Attached to");
}

std::string RehearsedCall::openMeeting() {
  meeting_.emplace(desk_.browser(), MeetingPage::Options{.window = WindowKind::App});
  return "browser: the microphone button says " + quoted(meeting_->label());
}

std::string RehearsedCall::startCall() {
  stream_ = desk_.audio().record();
  const std::string record = hushbox_->waitForLog("Jabra mic in use -> true");
  waitForToolTip("Hushbox: On a call — live");
  return "Hushbox: " + record;
}

std::string RehearsedCall::pressButton(double volume, bool muted) {
  return timePress([&] { desk_.audio().setVolume(volume); }, muted);
}

std::string RehearsedCall::pressAndBounce(bool muted) {
  return timePress(
      [&] {
        desk_.audio().setVolume(0.0);
        letPass(Milliseconds{100});
        desk_.audio().setVolume(1.0);
      },
      muted);
}

std::string RehearsedCall::clickInTeams(double volume) {
  const std::size_t before = meeting_->presses().size();
  const auto start = Clock::now();
  meeting_->clickMicrophone();
  waitUntil([&] { return desk_.audio().volume() == volume; }, serverTimeout,
            "the speakerphone to follow Teams");
  const auto delay = Clock::now() - start;
  // Longer than it would take to mistake the echo of our own write for a press.
  letPass(Milliseconds{1200});
  const std::size_t echoes = meeting_->presses().size() - before - 1;
  if (echoes != 0) throw DeskError("the echo of the volume change pressed Teams' button again");
  return "sound server: the speakerphone's volume is " +
         std::to_string(std::lround(desk_.audio().volume() * 100)) + " % after " +
         milliseconds(delay) + "; no further press in Teams";
}

std::string RehearsedCall::hangUp() {
  hushbox_->mark();
  meeting_->leaveCall();
  stream_.reset();
  return "Hushbox: " + hushbox_->waitForLog("Jabra mic in use -> false");
}

std::string RehearsedCall::drainBattery() {
  power_.change(lowBattery, "Discharging");
  return "UPower: " + std::to_string(std::lround(power_.level().value_or(-1))) + " %";
}

std::string RehearsedCall::startCallOnLowBattery() {
  meeting_->joinCall();
  stream_ = desk_.audio().record();
  const auto shown = desk_.notifications().waitForShown(1);
  const auto dunst = [this] { return desk_.notificationDaemon().shownNow(); };
  waitUntil([&] { return dunst() == 1; }, serverTimeout, "the warning on the display");
  const std::string title = "Jabra battery low: " + std::to_string(lowBattery) + '%';
  if (shown.size() != 1 || shown.front().title != title) {
    throw DeskError("the warning says " + quoted(shown.front().title));
  }
  // It would cover the place where the menu opens.
  desk_.notificationDaemon().closeAll();
  return "dunst: one notification, " + quoted(title) + ", " + quoted(shown.front().body);
}

std::string RehearsedCall::openMenu() {
  panel_.openMenu();
  const ItemMenu menu = panel_.itemMenu();
  menu.row("On a call — live");
  menu.row("Battery: " + std::to_string(lowBattery) + '%');
  std::string all;
  for (const ItemMenu::Row& row : menu.rows()) all += (all.empty() ? "" : " | ") + describe(row);
  return "menu: " + all;
}

std::string RehearsedCall::switchLaunchAtLogin(bool on) {
  if (!panel_.menu()) panel_.openMenu();
  panel_.chooseRow("Launch at login");
  waitUntil([&] { return panel_.itemMenu().row("Launch at login").on == on; }, serverTimeout,
            "the switch in the menu");
  const std::string entry = "autostart/org.hushbox.Hushbox.desktop";
  if (std::filesystem::exists(desk_.session().home() / ".config" / entry) != on) {
    throw DeskError("the menu's switch and ~/.config/" + entry + " disagree");
  }
  return "menu: " + describe(panel_.itemMenu().row("Launch at login")) + "; ~/.config/" + entry +
         (on ? " exists" : " does not exist");
}

std::string RehearsedCall::unplug() {
  desk_.audio().unplugSpeakerphone();
  const std::string record = hushbox_->waitForLog("Jabra input not present");
  waitForToolTip("Hushbox: Jabra not connected");
  return "Hushbox: " + record;
}

std::string RehearsedCall::quit() {
  panel_.openMenu();
  panel_.chooseRow("Quit Hushbox");
  const int status = hushbox_->waitForExit();
  if (status != 0) throw DeskError("Hushbox exited with status " + std::to_string(status));
  waitUntil([this] { return panel_.items().empty(); }, serverTimeout, "the panel to be empty");
  return "Hushbox exited with status 0; panel: no items";
}

std::string RehearsedCall::timePress(const std::function<void()>& press, bool muted) {
  const std::size_t before = meeting_->presses().size();
  const auto start = Clock::now();
  press();
  meeting_->waitForMuted(muted);
  meeting_->waitForPresses(before + 1);
  const auto presses = meeting_->presses();
  if (presses.size() != before + 1) throw DeskError("Teams' button was pressed more than once");
  return "browser: the button says " + quoted(meeting_->label()) + ", pressed " +
         milliseconds(presses.back() - start) + " after the volume changed";
}

void RehearsedCall::waitForToolTip(const std::string& text) const {
  waitUntil([&] { return panel_.toolTip() == text; }, serverTimeout,
            "the tool tip " + quoted(text));
}

}  // namespace hushbox::rehearsal
