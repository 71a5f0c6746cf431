#pragma once

namespace hushbox {

/// A 12-hour clock with words for the halves of the day, or a 24-hour clock.
enum class ClockStyle { twelveHours, twentyFourHours };

}  // namespace hushbox
