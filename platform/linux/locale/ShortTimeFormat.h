#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/locale/ClockStyle.h"

namespace hushbox {

/// A locale's conventions for times, as strftime formats.
struct TimeConventions {
  /// With seconds, in the clock style that the locale prefers.
  std::string_view time;
  /// With seconds, as a 12-hour clock; empty where the locale has none.
  std::string_view halfDayTime;
  /// Whether the locale has words for the halves of the day.
  bool hasHalves = false;
};

/// The strftime format for times without seconds and time zone, in the order and with the
/// separators of the locale. `style` takes precedence over the locale's own, but without words for
/// the halves of the day the clock has 24 hours. The formats may be in any encoding that extends
/// ASCII.
std::string shortTimeFormat(const TimeConventions& conventions, std::optional<ClockStyle> style);

}  // namespace hushbox
