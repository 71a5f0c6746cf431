#pragma once

#include <cstddef>
#include <functional>

#include "platform/Time.h"

namespace hushbox::doubles {

/// The main run loop, the queues and their clock, which stands still except where a function says
/// otherwise. Everything here is for the main thread, except `isMainThread` and `now`.
///
/// Blocks for a global queue run on threads of their own, side by side, started by whatever runs
/// the loop; those that run are waited for, in real time, before the clock moves.

bool isMainThread();

/// Ends the process unless on the main thread; `what` is called there only.
void requireMainThread(const char* what);

/// The time of CLOCK_MONOTONIC_RAW.
Instant now();

/// Runs what is due now, and what that leads to, until all is quiet.
void settle();

/// Lets that much time pass, running everything at its time.
void advance(TimeInterval span);

/// Runs the loop until the condition holds, jumping from deadline to deadline; false when it does
/// not hold after `limit`.
bool runUntil(const std::function<bool()>& condition, TimeInterval limit);

/// Lets time pass without running anything: the main thread is busy.
void keepBusy(TimeInterval span);

/// Timers that the main run loop holds.
std::size_t timerCount();
/// Blocks that wait on the main queue for their turn, delayed ones included.
std::size_t pendingMainBlocks();

/// In an open menu the loop runs in its tracking mode, in which only timers of the common modes
/// fire. The menu's double sets this.
void setTracking(bool tracking);

/// Tells the loop not to wait for this thread, which waits for something itself.
class Parked {
 public:
  Parked();
  ~Parked();
  Parked(const Parked&) = delete;
  Parked& operator=(const Parked&) = delete;
};

/// Whether the application was asked to terminate.
bool isTerminated();
/// Whether it was made an agent: the activation policy is accessory.
bool isAgent();

/// Drops timers and blocks and starts afresh.
void resetRunLoop();

}  // namespace hushbox::doubles
