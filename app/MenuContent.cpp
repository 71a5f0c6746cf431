#include "app/MenuContent.h"

#include <utility>

#include "platform/AccessibilityTree.h"
#include "platform/LoginItem.h"
#include "platform/MainLoop.h"
#include "platform/Platform.h"

namespace hushbox {
namespace {

/// After a refusal the switch returns to the system's state, which is a change too and may be
/// refused as well. The bound ends the exchange with a system that contradicts itself each time.
constexpr int maxLaunchAtLoginChanges = 4;

bool launchesAtLogin() {
  return platform().loginItem.status() == LoginItem::Status::enabled;
}

MenuRow textRow(std::string text, bool localized) {
  return {.kind = MenuRow::Kind::text, .text = std::move(text), .localized = localized};
}

MenuRow separator() {
  return {.kind = MenuRow::Kind::separator};
}

MenuRow button(std::string text, std::function<void()> action) {
  return {.kind = MenuRow::Kind::button,
          .text = std::move(text),
          .localized = true,
          .enabled = true,
          .action = std::move(action)};
}

}  // namespace

MenuContent::MenuContent(const MuteCoordinator& coordinator)
    : coordinator_(coordinator), launchAtLogin_(objectWillChange, launchesAtLogin()) {}

std::vector<MenuRow> MenuContent::rows() {
  std::vector<MenuRow> rows;
  rows.push_back(textRow(callLine(), true));
  if (coordinator_.battery().level()) rows.push_back(textRow(batteryLine(), true));
  // Not localised: the status line contains the time of day.
  rows.push_back(textRow(coordinator_.lastEvent(), false));
  rows.push_back(separator());
  if (!platform().accessibility.isProcessTrusted()) {
    rows.push_back(
        button("Grant Accessibility…", lifetime_.weakly([this] { grantAccessibility(); })));
  }
  MenuRow launch =
      button("Launch at login", lifetime_.weakly([this] { setLaunchAtLogin(!launchAtLogin()); }));
  launch.kind = MenuRow::Kind::toggle;
  launch.on = launchAtLogin();
  rows.push_back(std::move(launch));
  rows.push_back(separator());
  MenuRow quit = button("Quit Hushbox", [] { platform().mainLoop.terminate(); });
  quit.keyEquivalent = "q";
  rows.push_back(std::move(quit));
  return rows;
}

std::string MenuContent::callLine() const {
  const JabraMonitor& jabra = coordinator_.jabra();
  if (!jabra.deviceName()) return "Jabra not connected";
  if (!jabra.isInCall()) return "Not on a call";
  return coordinator_.isMuted() ? "On a call — muted" : "On a call — live";
}

std::string MenuContent::batteryLine() const {
  const BatteryMonitor& battery = coordinator_.battery();
  return "Battery: " + std::to_string(battery.level().value_or(0)) + "%" +
         (battery.isCharging() ? " (charging)" : "");
}

void MenuContent::grantAccessibility() {
  platform().accessibility.isProcessTrustedWithOptions(/*prompt=*/true);
}

void MenuContent::setLaunchAtLogin(bool value) {
  for (int change = 0; change < maxLaunchAtLoginChanges; ++change) {
    launchAtLogin_ = value;
    LoginItem& item = platform().loginItem;
    if (value ? item.registerItem() : item.unregisterItem()) return;
    const bool actual = launchesAtLogin();
    if (actual == value) return;
    value = actual;
  }
  launchAtLogin_ = value;
}

}  // namespace hushbox
