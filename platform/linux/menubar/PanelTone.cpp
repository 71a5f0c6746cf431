#include "platform/linux/menubar/PanelTone.h"

#include <string>

namespace hushbox {
namespace {

/// Whether XDG_CURRENT_DESKTOP lists the name.
bool lists(std::string_view desktop, std::string_view name) {
  return (":" + std::string(desktop) + ":").find(":" + std::string(name) + ":") !=
         std::string::npos;
}

}  // namespace

PanelTone guessPanelTone(ColorScheme scheme, std::string_view desktop) {
  if (lists(desktop, "GNOME")) return PanelTone::dark;
  switch (scheme) {
    case ColorScheme::preferDark:
      return PanelTone::dark;
    case ColorScheme::preferLight:
      return PanelTone::light;
    case ColorScheme::noPreference:
      break;
  }
  return PanelTone::unknown;
}

bool recoloursSymbolicIcons(std::string_view desktop) {
  return lists(desktop, "GNOME") || lists(desktop, "KDE") || lists(desktop, "XFCE");
}

}  // namespace hushbox
