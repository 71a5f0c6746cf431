#pragma once

#include <functional>
#include <map>
#include <memory>

#include "platform/Time.h"
#include "platform/linux/mainloop/CounterSource.h"

namespace hushbox {

/// Blocks to be run on the default main context at set times, by CLOCK_BOOTTIME: elapsed time that
/// goes on while the machine sleeps. What fell due during a sleep runs right after it.
///
/// Never early, by the nanosecond; late by as much as the loop was busy. In order of the times, and
/// of the calls among equal ones. One descriptor serves all, so an empty queue costs nothing. Main
/// thread only.
class TimerQueue {
 public:
  TimerQueue();
  TimerQueue(const TimerQueue&) = delete;
  TimerQueue& operator=(const TimerQueue&) = delete;

  static Instant now();

  /// Calls `hook` before each block that runs, with the time at which the block was due. A source
  /// of events that happened earlier delivers them in it, so that a timer never overtakes them
  /// after the loop was busy.
  void setBeforeBlock(std::function<void(Instant due)> hook);

  /// Runs `block` once, `delay` from now; one that is negative or no number counts as zero.
  void runAfter(TimeInterval delay, std::function<void()> block);

  /// Runs `block` at each whole multiple of `interval` from now on; those that were missed count as
  /// one. An interval below 0.1 ms counts as that much. Gives the timer's record, kept by the
  /// queue.
  std::shared_ptr<void> runEvery(TimeInterval interval, std::function<void()> block);

 private:
  struct Timer {
    std::function<void()> block;
    /// Zero for a timer that fires once.
    Instant::duration interval{};
  };

  void add(Instant deadline, std::shared_ptr<Timer> timer);
  void fireDue();
  void arm();

  std::function<void(Instant due)> beforeBlock_;
  std::multimap<Instant, std::shared_ptr<Timer>> timers_;
  CounterSource source_;
};

}  // namespace hushbox
