#include "platform/linux/menubar/PanelTone.h"

#include <string>

namespace hushbox {

PanelTone guessPanelTone(ColorScheme scheme, std::string_view desktop) {
  const std::string names = ":" + std::string(desktop) + ":";
  if (names.find(":GNOME:") != std::string::npos) return PanelTone::dark;
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

}  // namespace hushbox
