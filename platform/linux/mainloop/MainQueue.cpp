#include "platform/linux/mainloop/MainQueue.h"

#include <sys/eventfd.h>

#include <utility>

namespace hushbox {

MainQueue::MainQueue() : source_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), [this] { runPosted(); }) {}

void MainQueue::post(std::function<void()> block) {
  const std::lock_guard lock(mutex_);
  posted_.push_back(std::move(block));
  // Under the lock, so that the queue still exists: the block may end the loop.
  eventfd_write(source_.descriptor(), 1);
}

void MainQueue::runPosted() {
  std::vector<std::function<void()>> blocks;
  {
    const std::lock_guard lock(mutex_);
    blocks.swap(posted_);
  }
  for (auto& block : blocks) std::exchange(block, nullptr)();
}

}  // namespace hushbox
