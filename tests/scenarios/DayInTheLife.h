#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "coordinator/MuteCoordinator.h"
#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {

/// A random day at the desk, generated from a seed: presses, calls, meetings, plugging, and
/// everything that may fail. After each span of time it checks the program's invariants; a
/// violation fails the running test.
class DayInTheLife {
 public:
  enum class Kind {
    /// One call, with the headset plugged in throughout and a Teams that replies.
    plain,
    /// Everything that may happen.
    wild
  };

  DayInTheLife(std::uint64_t seed, Kind kind);

  /// Runs that many random events, with time between them.
  void live(int steps);

  /// Sets up a call with a readable meeting, waits, and checks that the coordinator knows Teams'
  /// state.
  void settle();

  /// All calls to the platform, in order.
  const Lines& history() const { return history_; }

  int buttonEvents() const { return buttonEvents_; }
  int teamsPresses() const { return teamsPresses_; }
  int polls() const { return polls_; }

 private:
  void nextEvent();
  void plainEvent();
  void wildEvent();

  /// Lets time pass in spans that end just before and at each poll.
  void pass(TimeInterval interval);
  void passSpan(TimeInterval interval);
  void check(Instant start, const Lines& lines);
  void checkPoll(Instant start, int teamsCalls, int pressCalls);
  void checkPress(std::string_view status);

  /// Returns a number from 0 to `count` - 1. Not a standard distribution: those differ between
  /// standard libraries.
  std::uint64_t draw(std::uint64_t count) { return random_() % count; }
  bool oneIn(std::uint64_t count) { return draw(count) == 0; }
  TimeInterval drawDelay();

  bool isPluggedIn() const { return speakerphone_ != 0; }
  void plug();
  void unplug();
  void press();
  void setInCall(bool inCall);

  Kind kind_;
  std::mt19937_64 random_;
  SimulatedDesk desk_;
  AudioObjectID speakerphone_ = 0;
  std::unique_ptr<MuteCoordinator> coordinator_;

  Lines history_;
  /// The label of the microphone button at the last press of Teams, until its status line appears.
  std::string pressedLabel_;
  /// The last status line, without its time.
  std::string lastStatus_ = "Waiting for Jabra button…";
  /// The earliest moment at which the last failed read of Teams may have happened.
  std::optional<Instant> pollFailed_;
  int devicePresses_ = 0;
  int buttonEvents_ = 0;
  int teamsPresses_ = 0;
  int polls_ = 0;
};

}  // namespace hushbox
