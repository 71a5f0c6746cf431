#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "coordinator/MuteCoordinator.h"
#include "platform/simulated/SimulatedDesk.h"
#include "tests/scenarios/CallInvariants.h"

namespace hushbox {

/// 24 simulated hours at the desk, generated from a seed: calls, presses and bounces, plugging,
/// Teams restarting, trees that grow and lose the button, a power tool that hangs, a wall clock
/// that jumps, and sleep.
///
/// It checks the invariants of `CallInvariants` after every turn of the main loop. Every hour it
/// also waits until everything is in order, and checks that a press then arrives in Teams, that
/// nothing but the timers is pending, and that the heap has not grown.
class WholeDay {
 public:
  explicit WholeDay(std::uint64_t seed);

  /// Lives through the day. Returns what went wrong first, or nullopt.
  std::optional<std::string> live();

  std::size_t events() const { return events_; }
  std::size_t presses() const { return presses_; }
  std::size_t turns() const { return turns_; }
  /// By how many bytes the heap has grown between the first and the last hour; 0 where the C
  /// library cannot tell.
  std::ptrdiff_t heapGrowth() const { return heapAtEnd_ - heapAtFirstHour_; }

 private:
  void nextEvent();
  void drawTeamsEvent();
  void drawPowerTool();
  void settle();
  void checkPress();
  void checkNothingPending();
  void checkHeap(int hour);
  void pass(TimeInterval interval);
  void growTree();
  void shrinkTree();
  void press();
  bool isPluggedIn() const { return speakerphone_ != 0; }
  void plug();
  void unplug();
  void fail(const std::string& text);

  /// Returns a number from 0 to `count` - 1.
  std::uint64_t draw(std::uint64_t count) { return random_() % count; }
  bool oneIn(std::uint64_t count) { return draw(count) == 0; }

  std::mt19937_64 random_;
  SimulatedDesk desk_;
  AudioObjectID speakerphone_ = 0;
  std::unique_ptr<MuteCoordinator> coordinator_;
  CallInvariants invariants_;
  std::vector<SimulatedElementRef> grown_;
  std::optional<std::string> failure_;
  std::size_t events_ = 0;
  std::size_t presses_ = 0;
  std::size_t turns_ = 0;
  std::ptrdiff_t heapAtFirstHour_ = 0;
  std::ptrdiff_t heapAtEnd_ = 0;
};

}  // namespace hushbox
