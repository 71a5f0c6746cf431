#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace hushbox {

/// What the power-management tool says of the headset's battery.
struct BatteryReading {
  /// In percent, as printed: 0 or more, not limited to 100.
  std::int64_t level;
  bool charging;

  friend bool operator==(const BatteryReading&, const BatteryReading&) = default;
};

/// Reads the tool's output: the first line that contains `nameMatch` must hold a percentage and a
/// state word, as in "62%; discharging". Empty when there is no such line or it does not; later
/// lines are not tried. `output` may be any bytes. Pure; any thread.
std::optional<BatteryReading> parseBatteryReading(std::string_view output,
                                                  std::string_view nameMatch);

}  // namespace hushbox
