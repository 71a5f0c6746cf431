#pragma once

namespace hushbox {

/// How a clock counts the day: in two halves or in one piece.
enum class ClockStyle { twelveHours, twentyFourHours };

}  // namespace hushbox
