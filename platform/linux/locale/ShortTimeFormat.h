#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/locale/ClockStyle.h"

namespace hushbox {

/// A locale's conventions for times, as strftime formats.
struct TimeConventions {
  /// With seconds, in whichever style the locale prefers.
  std::string_view time;
  /// With seconds and the half of the day; empty where nobody counts in halves.
  std::string_view halfDayTime;
  /// Whether the locale has words for the halves of the day.
  bool hasHalves = false;
};

/// The strftime format of a locale's times without seconds and time zone, in the locale's own order
/// and with its own separators. The asked-for style wins over the locale's, except that without
/// words for the halves of the day there is no twelve-hour clock. Formats may be in any encoding
/// that extends ASCII.
std::string shortTimeFormat(const TimeConventions& conventions, std::optional<ClockStyle> style);

}  // namespace hushbox
