#pragma once

#include <chrono>
#include <ratio>

namespace hushbox {

/// A span of time in seconds, as the platforms' timers take it.
using TimeInterval = std::chrono::duration<double>;

/// The clock for elapsed time. It ignores changes of the wall clock and continues while the machine
/// sleeps, so setting the time can neither swallow a press nor stall the poll.
struct ContinuousClock {
  using rep = std::chrono::nanoseconds::rep;
  using period = std::chrono::nanoseconds::period;
  using duration = std::chrono::nanoseconds;
  using time_point = std::chrono::time_point<ContinuousClock>;
  static constexpr bool is_steady = true;
};

/// A moment on the continuous clock, in nanoseconds since an origin that the platform chooses.
using Instant = ContinuousClock::time_point;

/// Earlier than every event, yet far enough from the ends of the range that differences between
/// moments do not overflow.
inline constexpr Instant distantPast{-std::chrono::hours{24 * 365 * 100}};

}  // namespace hushbox
