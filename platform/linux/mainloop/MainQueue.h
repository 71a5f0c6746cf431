#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include "platform/linux/mainloop/CounterSource.h"

namespace hushbox {

/// Runs blocks from any thread on the default main context, in the order they were posted.
/// Constructed and destroyed on the main thread; blocks that have not run are then destroyed.
class MainQueue {
 public:
  MainQueue();
  MainQueue(const MainQueue&) = delete;
  MainQueue& operator=(const MainQueue&) = delete;

  /// Any thread. Runs in a later turn of the loop, never within this call.
  void post(std::function<void()> block);

 private:
  void runPosted();

  std::mutex mutex_;
  std::vector<std::function<void()>> posted_;
  CounterSource source_;
};

}  // namespace hushbox
