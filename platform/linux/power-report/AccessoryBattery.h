#pragma once

#include <gio/gio.h>

#include <optional>
#include <string>

namespace hushbox {

/// The battery of an accessory, as UPower knows it.
struct AccessoryBattery {
  /// What the user knows the accessory by; any text.
  std::string name;
  /// In percent, 0 to 100.
  int level = 0;
  /// In UPower's figures.
  unsigned state = 0;

  /// Reads a device's properties (an a{sv}). Empty for what powers the computer itself, for a
  /// battery that is not there, and where the level is unknown or only a rough guess.
  static std::optional<AccessoryBattery> fromProperties(GVariant* properties);

  /// One line of the power report, with its line feed: name, tab, level, state.
  std::string reportLine() const;
};

}  // namespace hushbox
