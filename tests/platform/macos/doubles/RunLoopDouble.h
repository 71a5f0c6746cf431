#pragma once

#include <cstddef>
#include <functional>

#include "platform/Time.h"

namespace hushbox::doubles {

/// The main run loop, the queues and their clock. The clock stands still except where a function
/// says otherwise. Main thread only, except `isMainThread` and `now`.
///
/// Blocks on a global queue run concurrently, each on its own thread. The functions that run the
/// loop start them and wait for them, in real time, before the clock advances.

bool isMainThread();

/// Ends the process unless on the main thread; the message names `what`.
void requireMainThread(const char* what);

/// The time of CLOCK_MONOTONIC_RAW.
Instant now();

/// Runs everything that is due, including what that schedules for now.
void settle();

/// Advances the clock by `span` and runs everything at its time.
void advance(TimeInterval span);

/// Runs the loop until the condition holds, jumping from deadline to deadline. Returns false if it
/// does not hold after `limit`.
bool runUntil(const std::function<bool()>& condition, TimeInterval limit);

/// Runs one thing that is due, or advances the clock to the next deadline. Returns false if nothing
/// is due until `end`. Drains no pool.
bool runOne(Instant end);

/// Advances the clock without running anything, as if the main thread were busy.
void keepBusy(TimeInterval span);

/// Returns how many timers the main run loop owns.
std::size_t timerCount();
/// Returns how many blocks wait on the main queue, including delayed ones.
std::size_t pendingMainBlocks();

/// While a menu is open the loop runs in its tracking mode, in which only timers of the common
/// modes fire. The menu's double calls this.
void setTracking(bool tracking);

/// While it lives, the loop does not wait for this background thread, which is blocked.
class Parked {
 public:
  Parked();
  ~Parked();
  Parked(const Parked&) = delete;
  Parked& operator=(const Parked&) = delete;
};

/// Removes all timers and blocks and restores the initial state.
void resetRunLoop();

}  // namespace hushbox::doubles
