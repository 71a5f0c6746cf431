#include "platform/linux/menubar/PanelTone.h"

#include <algorithm>
#include <string>

namespace hushbox {
namespace {

constexpr std::string_view tiling[] = {"Hyprland", "i3", "niri", "river", "sway", "wlroots"};

}  // namespace

bool namesDesktop(std::string_view desktop, std::string_view name) {
  return (":" + std::string(desktop) + ":").find(":" + std::string(name) + ":") !=
         std::string::npos;
}

PanelTone guessPanelTone(ColorScheme scheme, std::string_view desktop, PanelTone theme) {
  if (namesDesktop(desktop, "GNOME")) return PanelTone::dark;
  if (theme != PanelTone::unknown) return theme;
  switch (scheme) {
    case ColorScheme::preferDark:
      return PanelTone::dark;
    case ColorScheme::preferLight:
      return PanelTone::light;
    case ColorScheme::noPreference:
      break;
  }
  const bool isTiling = std::ranges::any_of(
      tiling, [&](std::string_view name) { return namesDesktop(desktop, name); });
  return isTiling ? PanelTone::dark : PanelTone::unknown;
}

bool recoloursSymbolicIcons(std::string_view desktop) {
  return namesDesktop(desktop, "GNOME") || namesDesktop(desktop, "KDE") ||
         namesDesktop(desktop, "XFCE");
}

bool enlargesPixels(std::string_view desktop) {
  return namesDesktop(desktop, "MATE");
}

}  // namespace hushbox
