#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include "platform/linux/mainloop/CounterSource.h"

namespace hushbox {

/// Blocks handed over by any thread, to be run on the default main context in the order of the
/// calls. Made and destroyed on the main thread; what has not run by then is destroyed unrun.
class MainQueue {
 public:
  MainQueue();
  MainQueue(const MainQueue&) = delete;
  MainQueue& operator=(const MainQueue&) = delete;

  /// Any thread. Runs in a later turn of the loop, never inside the call.
  void post(std::function<void()> block);

 private:
  void runPosted();

  std::mutex mutex_;
  std::vector<std::function<void()>> posted_;
  CounterSource source_;
};

}  // namespace hushbox
