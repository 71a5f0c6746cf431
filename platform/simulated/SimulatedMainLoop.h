#pragma once

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

/// A main loop on a clock that stands still until it is told to move, to the nanosecond.
///
/// What is due runs in the order of the deadlines; ties in the order of their making, or shuffled.
/// Everything is on one thread; "another thread" is a stretch in which `isMainThread()` is false.
/// Lines of the journal: "repeat every 60 s", "after 0.3 s", "post", "utility", "run", "terminate".
class SimulatedMainLoop final : public MainLoop {
 public:
  explicit SimulatedMainLoop(Journal& journal) : journal_(journal) {}

  /// Moves the clock on, running everything due up to and including the end. What falls due while a
  /// block keeps the thread beyond the end waits for the next call.
  void advance(TimeInterval interval);

  /// The same, turn by turn, only until the condition holds; false when it does not by the end.
  bool advanceUntil(const std::function<bool()>& condition, TimeInterval limit);

  /// Runs everything that is due now, and what that makes due now.
  void runUntilIdle() { advance(TimeInterval::zero()); }

  /// Lets time pass without running anything: the machine sleeps, or a block keeps the main thread.
  void sleep(TimeInterval interval);

  /// After `sleep`: runs what is overdue, each repeating timer once.
  void wake() { runUntilIdle(); }

  /// From now on whatever falls due at the same moment runs in an order drawn from `seed`; blocks
  /// posted with `mainAsync` keep theirs among themselves.
  void shuffleTies(std::uint64_t seed) { shuffle_.emplace(seed); }

  /// How long after its submission a utility block runs; at first it runs in the next turn.
  void setUtilityLatency(TimeInterval latency) { utilityLatency_ = latency; }

  /// Keeps utility blocks, also those that wait already, until they are released.
  void holdUtilityQueue();
  /// Runs the waiting utility block at that place in line (0 is the oldest) to its end, now. False
  /// when there is none.
  bool releaseUtilityBlock(std::size_t index = 0);
  /// Ends the holding; blocks that wait run after the latency.
  void resumeUtilityQueue();
  std::size_t waitingUtilityBlocks() const { return utility_.size(); }

  /// Something that the surroundings do by themselves after so long. Neither journaled nor counted.
  void after(TimeInterval delay, std::function<void()> event);

  /// The same for a callback into the program, which is still owed when everything else has ended.
  void deliver(TimeInterval delay, std::function<void()> callback);

  /// Runs and destroys `block` as if on another thread.
  void runInBackground(std::function<void()> block);

  /// Reports a violation unless it is called on the main thread.
  void requireMainThread(std::string_view operation) const;

  bool terminated() const { return terminated_; }

  /// Runs every timer, delayed item, posted block and callback that is in place, each once and at
  /// its time at the earliest, but nothing of what they put in place anew. Events of the
  /// surroundings are dropped.
  void fireEverythingOnce();

  Instant now() const override;
  bool isMainThread() const override { return onMainThread_; }
  RegistrationToken scheduleRepeating(TimeInterval interval, std::function<void()> block) override;
  void mainAsyncAfter(TimeInterval delay, const WorkItem& item) override;
  void mainAsync(std::function<void()> block) override;
  void utilityAsync(std::function<void()> block) override;

  /// Runs what is in place, moving the clock from deadline to deadline, until `terminate()`.
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
    bool ofSurroundings = false;
  };
  using UtilityBlock = std::shared_ptr<std::function<void()>>;

  void enqueue(Instant due, std::function<void()> run, bool ofSurroundings = false);
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
  std::deque<std::function<void()>> posted_;
  std::vector<UtilityBlock> utility_;
  TimeInterval utilityLatency_{};
  bool utilityHeld_ = false;
};

}  // namespace hushbox
