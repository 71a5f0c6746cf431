#pragma once

#include <gio/gio.h>

#include <optional>
#include <string>

namespace hushbox {

/// The battery of an accessory, from UPower.
struct AccessoryBattery {
  /// The accessory's name for the user; any text.
  std::string name;
  /// In percent, 0 to 100.
  int level = 0;
  /// A value of UPower's property State.
  unsigned state = 0;

  /// Reads the properties of a device (an a{sv}). Returns nullopt for a battery or supply that
  /// powers the computer itself, for an absent battery, and for a level that is unknown or a rough
  /// guess.
  static std::optional<AccessoryBattery> fromProperties(GVariant* properties);

  /// One line of the power report, with its line feed: name, tab, level, state.
  std::string reportLine() const;
};

}  // namespace hushbox
