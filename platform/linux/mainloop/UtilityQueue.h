#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace hushbox {

/// Blocks to be run on background threads of lowered priority.
///
/// At most `mostThreads` run at a time, further blocks wait their turn. A thread is made when there
/// is work for it and ends with the work, so that an idle program has none.
class UtilityQueue {
 public:
  /// What a program needs whose background work is a reading a minute, with room for one at each
  /// call's start; a flood beyond that is better queued than run.
  static constexpr std::size_t mostThreads = 4;
  /// In nice steps; children started by a block inherit it.
  static constexpr int lowering = 5;

  UtilityQueue() = default;
  /// As `finish()`.
  ~UtilityQueue();
  UtilityQueue(const UtilityQueue&) = delete;
  UtilityQueue& operator=(const UtilityQueue&) = delete;

  /// Any thread. `block` is run and destroyed on a background thread. Where the system has no
  /// thread to give, it waits for the next call.
  void post(std::function<void()> block);

  /// Destroys what has not begun and waits for what has. Main thread only; further blocks are
  /// welcome afterwards.
  void finish();

 private:
  using Threads = std::list<std::thread>;

  void work(Threads::iterator self);

  std::mutex mutex_;
  std::condition_variable ended_;
  std::deque<std::function<void()>> posted_;
  Threads running_;
  /// Past their last use of the queue; to be joined by whoever comes next.
  Threads finished_;
};

}  // namespace hushbox
