#pragma once

#include <chrono>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string_view>
#include <vector>

#include "platform/MainLoop.h"
#include "platform/simulated/Journal.h"

namespace hushbox {

/// A main loop with a virtual clock that moves only when told to, exact to the nanosecond.
///
/// Events run in the order of their deadlines; events with the same deadline run in the order in
/// which they were scheduled, or shuffled. Everything runs on one thread; "another thread" is
/// simulated by `isMainThread()` returning false.
///
/// Journal lines: "repeat every 60 s", "after 0.3 s", "post", "utility", "run", "terminate".
class SimulatedMainLoop final : public MainLoop {
 public:
  explicit SimulatedMainLoop(Journal& journal) : journal_(journal) {}

  /// Advances the clock and runs everything due up to and including the end. If a block takes the
  /// clock past the end, what is due after the end waits for the next call.
  void advance(TimeInterval interval);

  /// Does the same, but stops after the turn in which `condition` becomes true. Returns false if it
  /// never does.
  bool advanceUntil(const std::function<bool()>& condition, TimeInterval limit);

  /// Runs everything that is due now, and whatever that makes due now.
  void runUntilIdle() { advance(TimeInterval::zero()); }

  /// Advances the clock without running anything: the machine sleeps or a block is busy.
  void sleep(TimeInterval interval);

  /// Runs what has become due during `sleep`, each repeating timer once.
  void wake() { runUntilIdle(); }

  /// From now on, runs events with the same deadline in an order drawn from `seed`. Blocks posted
  /// with `mainAsync` keep their order among each other.
  void shuffleTies(std::uint64_t seed) { shuffle_.emplace(seed); }

  /// From now on, runs events with the same deadline in the reverse order, with the same exception.
  void reverseTies() { reversed_ = true; }

  /// How long it is until each event in place is due, in the order in which they will run. Events
  /// that are overdue count as due now.
  std::vector<std::chrono::nanoseconds> pendingDelays() const;

  /// How long after its submission a utility block runs; initially in the next turn.
  void setUtilityLatency(TimeInterval latency) { utilityLatency_ = latency; }

  /// Holds all utility blocks, including those already waiting, until they are released.
  void holdUtilityQueue();
  /// Runs the waiting utility block at `index` (0 is the oldest) now. Returns false if there is
  /// none.
  bool releaseUtilityBlock(std::size_t index = 0);
  /// Stops holding; waiting blocks run after the latency.
  void resumeUtilityQueue();
  std::size_t waitingUtilityBlocks() const { return utility_.size(); }

  /// Schedules an event of the program's environment. Not journaled or counted;
  /// `fireEverythingOnce` drops it.
  void after(TimeInterval delay, std::function<void()> event);

  /// Schedules a callback into the program. Not journaled or counted; `fireEverythingOnce` runs it.
  void deliver(TimeInterval delay, std::function<void()> callback);

  /// Runs and destroys `block` as if on another thread.
  void runInBackground(std::function<void()> block);

  /// Reports a violation unless called on the main thread.
  void requireMainThread(std::string_view operation) const;

  bool terminated() const { return terminated_; }

  /// The number of activities that the program holds.
  long activityCount() const { return activity_.use_count() - 1; }

  /// Runs every timer, delayed item, posted block and callback in place once, advancing the clock
  /// to each deadline, but nothing that they schedule. Drops events of the environment.
  void fireEverythingOnce();

  Instant now() const override;
  bool isMainThread() const override { return onMainThread_; }
  RegistrationToken scheduleRepeating(TimeInterval interval, std::function<void()> block) override;
  void mainAsyncAfter(TimeInterval delay, const WorkItem& item) override;
  void mainAsync(std::function<void()> block) override;
  void utilityAsync(std::function<void()> block) override;
  std::shared_ptr<void> beginActivity(const std::string& reason) override;

  /// Advances the clock from deadline to deadline until `terminate()`.
  int run() override;
  void terminate() override;

 private:
  struct Timer;
  struct Deadline {
    Instant due;
    std::uint64_t tie;
    std::uint64_t sequence;
    auto operator<=>(const Deadline&) const = default;
  };
  struct Event {
    std::function<void()> run;
    bool ofEnvironment = false;
  };
  using UtilityBlock = std::shared_ptr<std::function<void()>>;

  void enqueue(Instant due, std::function<void()> run, bool ofEnvironment = false);
  void arm(const std::shared_ptr<Timer>& timer);
  void runNext();
  void runNextPosted();
  void scheduleUtility(const UtilityBlock& block);
  void runUtility(const UtilityBlock& block);
  Instant later(TimeInterval interval) const;

  Journal& journal_;
  Instant now_{};
  bool onMainThread_ = true;
  bool running_ = false;
  bool terminated_ = false;
  std::map<Deadline, Event> events_;
  std::uint64_t sequence_ = 0;
  std::optional<std::mt19937_64> shuffle_;
  bool reversed_ = false;
  std::deque<std::function<void()>> posted_;
  std::vector<UtilityBlock> utility_;
  TimeInterval utilityLatency_{};
  bool utilityHeld_ = false;
  /// Each activity is one more reference to it.
  const std::shared_ptr<void> activity_ = std::make_shared<char>();
};

}  // namespace hushbox
