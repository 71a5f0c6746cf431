#pragma once

#include <chrono>
#include <ratio>

namespace hushbox {

/// A span of time in seconds, as the platforms' timers take it.
using TimeInterval = std::chrono::duration<double>;

/// The clock that measures elapsed time. It never jumps with the wall clock and goes on while the
/// machine sleeps, so that setting the time can neither swallow a press nor stall the poll.
struct ContinuousClock {
  using rep = std::chrono::nanoseconds::rep;
  using period = std::chrono::nanoseconds::period;
  using duration = std::chrono::nanoseconds;
  using time_point = std::chrono::time_point<ContinuousClock>;
  static constexpr bool is_steady = true;
};

/// A moment on the continuous clock, in nanoseconds from an origin of the platform's own.
using Instant = ContinuousClock::time_point;

/// Earlier than anything that happens; far enough from the ends that differences do not overflow.
inline constexpr Instant distantPast{-std::chrono::hours{24 * 365 * 100}};

}  // namespace hushbox
