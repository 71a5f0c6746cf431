#include "platform/linux/mainloop/UtilityQueue.h"

#include <sys/resource.h>
#include <unistd.h>

#include <system_error>
#include <utility>

namespace hushbox {

UtilityQueue::~UtilityQueue() {
  finish();
}

void UtilityQueue::post(std::function<void()> block) {
  Threads finished;
  {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(block));
    finished.swap(finished_);
    if (running_.size() < maxThreads) {
      const auto self = running_.emplace(running_.end());
      try {
        *self = std::thread([this, self] { work(self); });
      } catch (const std::system_error&) {
        running_.erase(self);
      }
    }
  }
  for (std::thread& thread : finished) thread.join();
}

void UtilityQueue::finish() {
  std::deque<std::function<void()>> dropped;
  Threads finished;
  {
    std::unique_lock lock(mutex_);
    dropped.swap(posted_);
    ended_.wait(lock, [this] { return running_.empty(); });
    finished.swap(finished_);
  }
  for (std::thread& thread : finished) thread.join();
}

void UtilityQueue::work(Threads::iterator self) {
  const auto thread = static_cast<id_t>(gettid());
  setpriority(PRIO_PROCESS, thread, getpriority(PRIO_PROCESS, thread) + niceness);
  std::unique_lock lock(mutex_);
  while (!posted_.empty()) {
    auto block = std::move(posted_.front());
    posted_.pop_front();
    lock.unlock();
    block();
    block = nullptr;
    lock.lock();
  }
  finished_.splice(finished_.end(), running_, self);
  ended_.notify_all();
}

}  // namespace hushbox
