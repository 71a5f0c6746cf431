#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace hushbox {

/// The state of the headset's battery, as the power-management tool reports it.
struct BatteryReading {
  /// In percent, as printed: not negative, but not limited to 100.
  std::int64_t level;
  bool charging;

  friend bool operator==(const BatteryReading&, const BatteryReading&) = default;
};

/// Parses the output of "pmset -g accps". The first line that contains `nameMatch` must hold a
/// level and a state word, as in "62%; discharging". Returns nullopt if no line contains
/// `nameMatch` or if the first one that does is malformed; later lines are not tried. `output` may
/// be any bytes. Pure; any thread.
std::optional<BatteryReading> parseBatteryReading(std::string_view output,
                                                  std::string_view nameMatch);

}  // namespace hushbox
