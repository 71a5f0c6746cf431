#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace hushbox {

/// Runs blocks on background threads of lower priority.
///
/// At most `maxThreads` blocks run at a time; the others wait. A thread is started when there is
/// work for it and exits when there is none, so that an idle program has no such thread.
class UtilityQueue {
 public:
  /// Enough for one battery reading per minute and one at the start of each call; more than that is
  /// better queued.
  static constexpr std::size_t maxThreads = 4;
  /// Added to the program's own nice value for the threads (the kernel caps the sum at 19); child
  /// processes started by a block inherit it.
  static constexpr int niceness = 5;

  UtilityQueue() = default;
  /// Calls `finish()`.
  ~UtilityQueue();
  UtilityQueue(const UtilityQueue&) = delete;
  UtilityQueue& operator=(const UtilityQueue&) = delete;

  /// Any thread. Runs and destroys `block` on a background thread. If no thread can be started, the
  /// block waits for the next call.
  void post(std::function<void()> block);

  /// Destroys blocks that have not started and waits for those that have. Main thread only; blocks
  /// may be posted again afterwards.
  void finish();

 private:
  using Threads = std::list<std::thread>;

  void work(Threads::iterator self);

  std::mutex mutex_;
  std::condition_variable ended_;
  std::deque<std::function<void()>> posted_;
  Threads running_;
  /// Threads that no longer use the queue; the next call of post() or finish() joins them.
  Threads finished_;
};

}  // namespace hushbox
