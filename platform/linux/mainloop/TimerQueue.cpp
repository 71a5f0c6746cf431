#include "platform/linux/mainloop/TimerQueue.h"

#include <sys/timerfd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

namespace hushbox {
namespace {

using std::chrono::nanoseconds;

/// Far beyond any machine's uptime, and added to the present it does not overflow.
constexpr TimeInterval maxInterval = std::chrono::hours{24 * 365 * 100};
constexpr nanoseconds minInterval = std::chrono::microseconds{100};

nanoseconds rounded(TimeInterval interval) {
  if (!(interval > TimeInterval::zero())) return nanoseconds::zero();
  return std::chrono::ceil<nanoseconds>(std::min(interval, maxInterval));
}

timespec timespecOf(nanoseconds span) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(span);
  return {static_cast<time_t>(seconds.count()), static_cast<long>((span - seconds).count())};
}

}  // namespace

TimerQueue::TimerQueue()
    : source_(timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK), [this] { fireDue(); }) {}

Instant TimerQueue::now() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return Instant{std::chrono::seconds{time.tv_sec} + nanoseconds{time.tv_nsec}};
}

void TimerQueue::setBeforeBlock(std::function<void(Instant due)> hook) {
  beforeBlock_ = std::move(hook);
}

void TimerQueue::runAfter(TimeInterval delay, std::function<void()> block) {
  add(now() + rounded(delay), std::make_shared<Timer>(Timer{std::move(block), {}}));
}

std::shared_ptr<void> TimerQueue::runEvery(TimeInterval interval, std::function<void()> block) {
  const nanoseconds span = std::max(rounded(interval), minInterval);
  auto timer = std::make_shared<Timer>(Timer{std::move(block), span});
  add(now() + span, timer);
  return timer;
}

void TimerQueue::add(Instant deadline, std::shared_ptr<Timer> timer) {
  timers_.emplace(deadline, std::move(timer));
  arm();
}

void TimerQueue::fireDue() {
  // Timers that become due after this wait for the next turn, so that a timer that restarts itself
  // cannot keep the other sources of the loop waiting.
  const Instant due = now();
  while (!timers_.empty() && timers_.begin()->first <= due) {
    const auto next = timers_.begin();
    const auto [deadline, timer] = *next;
    if (beforeBlock_) beforeBlock_(deadline);
    timers_.erase(next);
    if (timer->interval != nanoseconds::zero())
      timers_.emplace(deadline + timer->interval * ((due - deadline) / timer->interval + 1), timer);
    timer->block();
  }
  arm();
}

void TimerQueue::arm() {
  itimerspec at{};
  // Zero would disarm the timer.
  if (!timers_.empty())
    at.it_value = timespecOf(std::max(timers_.begin()->first.time_since_epoch(), nanoseconds{1}));
  timerfd_settime(source_.descriptor(), TFD_TIMER_ABSTIME, &at, nullptr);
}

}  // namespace hushbox
