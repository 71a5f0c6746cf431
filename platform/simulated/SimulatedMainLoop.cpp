#include "platform/simulated/SimulatedMainLoop.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>
#include <utility>

#include "platform/simulated/Violation.h"

namespace hushbox {
namespace {

/// A loop that runs more turns than this while the clock stands still never becomes idle.
constexpr int maxTurnsPerInstant = 100'000;

/// The platforms round a timer interval of zero or less up to this.
constexpr TimeInterval minInterval{0.0001};

/// An application that was not asked to quit after this time never will be.
constexpr std::chrono::hours maxRunTime{24 * 30};

/// Keeps deadlines within the range of Instant.
constexpr TimeInterval maxDelay{std::chrono::hours{24 * 365 * 100}};

std::chrono::nanoseconds wholeNanoseconds(TimeInterval interval) {
  // NaN compares false and becomes zero.
  if (!(interval > TimeInterval::zero())) return {};
  const double seconds = std::min(interval, maxDelay).count();
  return std::chrono::nanoseconds{std::llround(seconds * 1e9)};
}

}  // namespace

struct SimulatedMainLoop::Timer {
  std::chrono::nanoseconds interval;
  std::function<void()> block;
  Instant due;
};

Instant SimulatedMainLoop::later(TimeInterval interval) const {
  return now_ + wholeNanoseconds(interval);
}

void SimulatedMainLoop::enqueue(Instant due, std::function<void()> run, bool ofEnvironment) {
  const std::uint64_t tie = shuffle_ ? (*shuffle_)() : reversed_ ? ~sequence_ : 0;
  events_.emplace(Deadline{due, tie, sequence_++}, Event{std::move(run), ofEnvironment});
}

std::vector<std::chrono::nanoseconds> SimulatedMainLoop::pendingDelays() const {
  std::vector<std::chrono::nanoseconds> delays;
  for (const auto& [deadline, event] : events_) {
    delays.push_back(std::max(deadline.due - now_, std::chrono::nanoseconds::zero()));
  }
  return delays;
}

void SimulatedMainLoop::runNext() {
  auto next = events_.extract(events_.begin());
  now_ = std::max(now_, next.key().due);
  next.mapped().run();
}

void SimulatedMainLoop::advance(TimeInterval interval) {
  advanceUntil([] { return false; }, interval);
}

bool SimulatedMainLoop::advanceUntil(const std::function<bool()>& condition, TimeInterval limit) {
  if (std::exchange(running_, true))
    reportViolation("The main loop was run from one of its blocks.");
  const Instant end = later(limit);
  Instant moment = now_;
  int turns = 0;
  bool holds = condition();
  while (!holds && !events_.empty() && events_.begin()->first.due <= end) {
    runNext();
    holds = condition();
    turns = std::exchange(moment, now_) == now_ ? turns + 1 : 0;
    if (turns > maxTurnsPerInstant) {
      reportViolation("The main loop never becomes idle: blocks keep scheduling blocks due now.");
      break;
    }
  }
  if (!holds) now_ = std::max(now_, end);
  running_ = false;
  return holds;
}

void SimulatedMainLoop::sleep(TimeInterval interval) {
  now_ = later(interval);
}

std::shared_ptr<void> SimulatedMainLoop::beginActivity(const std::string& reason) {
  requireMainThread("beginActivity");
  if (reason.empty()) reportViolation("An activity was begun without a reason.");
  return activity_;
}

int SimulatedMainLoop::run() {
  journal_.add("loop", "run");
  if (std::exchange(running_, true))
    reportViolation("The main loop was run from one of its blocks.");
  const Instant end = now_ + maxRunTime;
  while (!terminated_) {
    if (events_.empty() || now_ > end) {
      reportViolation("The application runs, and nothing scheduled ever ends it.");
      break;
    }
    runNext();
  }
  running_ = false;
  return 0;
}

void SimulatedMainLoop::terminate() {
  journal_.add("loop", "terminate");
  requireMainThread("terminate");
  terminated_ = true;
}

Instant SimulatedMainLoop::now() const {
  journal_.count("loop");
  return now_;
}

RegistrationToken SimulatedMainLoop::scheduleRepeating(TimeInterval interval,
                                                       std::function<void()> block) {
  journal_.add("loop", "repeat every ", interval.count(), " s");
  requireMainThread("scheduleRepeating");
  const auto whole = wholeNanoseconds(std::max(interval, minInterval));
  auto timer = std::make_shared<Timer>(Timer{whole, std::move(block), now_ + whole});
  arm(timer);
  return RegistrationToken(std::move(timer));
}

void SimulatedMainLoop::arm(const std::shared_ptr<Timer>& timer) {
  enqueue(timer->due, [this, timer] {
    // Armed before the block runs, as on real platforms; missed firings are skipped.
    timer->due += ((now_ - timer->due) / timer->interval + 1) * timer->interval;
    arm(timer);
    timer->block();
  });
}

void SimulatedMainLoop::mainAsyncAfter(TimeInterval delay, const WorkItem& item) {
  journal_.add("loop", "after ", delay.count(), " s");
  requireMainThread("mainAsyncAfter");
  enqueue(later(delay), item.invocation());
}

void SimulatedMainLoop::mainAsync(std::function<void()> block) {
  journal_.add("loop", "post");
  posted_.push_back(std::move(block));
  enqueue(now_, [this] { runNextPosted(); });
}

void SimulatedMainLoop::runNextPosted() {
  const auto block = std::move(posted_.front());
  posted_.pop_front();
  block();
}

void SimulatedMainLoop::utilityAsync(std::function<void()> block) {
  journal_.add("loop", "utility");
  requireMainThread("utilityAsync");
  utility_.push_back(std::make_shared<std::function<void()>>(std::move(block)));
  if (!utilityHeld_) scheduleUtility(utility_.back());
}

void SimulatedMainLoop::scheduleUtility(const UtilityBlock& block) {
  enqueue(later(utilityLatency_), [this, waiting = std::weak_ptr(block)] {
    const UtilityBlock due = waiting.lock();
    if (due && !utilityHeld_) runUtility(due);
  });
}

void SimulatedMainLoop::runUtility(const UtilityBlock& block) {
  std::erase(utility_, block);
  runInBackground(std::move(*block));
}

void SimulatedMainLoop::holdUtilityQueue() {
  utilityHeld_ = true;
}

bool SimulatedMainLoop::releaseUtilityBlock(std::size_t index) {
  if (index >= utility_.size()) return false;
  const UtilityBlock block = utility_[index];
  runUtility(block);
  return true;
}

void SimulatedMainLoop::resumeUtilityQueue() {
  utilityHeld_ = false;
  for (const UtilityBlock& block : utility_) scheduleUtility(block);
}

void SimulatedMainLoop::after(TimeInterval delay, std::function<void()> event) {
  enqueue(later(delay), std::move(event), /*ofEnvironment=*/true);
}

void SimulatedMainLoop::deliver(TimeInterval delay, std::function<void()> callback) {
  enqueue(later(delay), std::move(callback));
}

void SimulatedMainLoop::runInBackground(std::function<void()> block) {
  const bool before = std::exchange(onMainThread_, false);
  block();
  block = nullptr;
  onMainThread_ = before;
}

void SimulatedMainLoop::requireMainThread(std::string_view operation) const {
  if (onMainThread_) return;
  reportViolation(std::string(operation) + " was called off the main thread.");
}

void SimulatedMainLoop::fireEverythingOnce() {
  for (auto pending = std::exchange(events_, {}); !pending.empty();) {
    auto next = pending.extract(pending.begin());
    if (next.mapped().ofEnvironment) continue;
    now_ = std::max(now_, next.key().due);
    next.mapped().run();
  }
}

}  // namespace hushbox
