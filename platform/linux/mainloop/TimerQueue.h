#pragma once

#include <functional>
#include <map>
#include <memory>

#include "platform/Time.h"
#include "platform/linux/mainloop/CounterSource.h"

namespace hushbox {

/// Runs blocks on the default main context at given times of CLOCK_BOOTTIME, which includes the
/// machine's sleep; blocks that become due during a sleep run right after it. Main thread only.
///
/// A block never runs early, not by a nanosecond, and is late by as much as the loop was busy.
/// Blocks run in the order of their times, and among equal times in the order of the calls. All
/// share one descriptor; an empty queue costs nothing.
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

  /// Runs `block` once, `delay` from now; a negative delay or NaN counts as zero.
  void runAfter(TimeInterval delay, std::function<void()> block);

  /// Runs `block` at each multiple of `interval` from now on, once for all that were missed.
  /// Intervals below 0.1 ms count as 0.1 ms. Returns the timer's record, which the queue keeps.
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
