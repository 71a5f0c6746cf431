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

/// A day at the desk drawn from a seed: presses, calls, meetings, plugging, and everything that may
/// go wrong. After each stretch of time it is checked that the program kept its promises; a breach
/// fails the running test.
class DayInTheLife {
 public:
  enum class Kind {
    /// A call on a headset that stays, with a Teams that answers.
    plain,
    /// Everything that may happen does.
    wild
  };

  DayInTheLife(std::uint64_t seed, Kind kind);

  /// Lets so many things happen, with time between them.
  void live(int steps);

  /// Brings the day into a call with a meeting that can be read, waits, and checks that Teams'
  /// state is known as it is.
  void settle();

  /// Everything that the platform was asked for and told, in order.
  const Lines& history() const { return history_; }

  int buttonEvents() const { return buttonEvents_; }
  int teamsPresses() const { return teamsPresses_; }
  int polls() const { return polls_; }

 private:
  void nextEvent();
  void plainEvent();
  void wildEvent();

  /// Lets time pass in stretches that end just before and at each of the poll's ticks.
  void pass(TimeInterval interval);
  void passStretch(TimeInterval interval);
  void check(Instant start, const Lines& lines);
  void checkPoll(Instant start, int teamsCalls, int pressCalls);
  void checkPress(std::string_view status);

  /// From 0 to `count` - 1. No distribution of the library: those differ between libraries.
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
  /// The microphone button's label in the press that has no status yet; empty without one.
  std::string pressedLabel_;
  /// The last status line, without its time.
  std::string lastStatus_ = "Waiting for Jabra button…";
  /// When a reading of Teams failed at the earliest.
  std::optional<Instant> pollFailed_;
  int devicePresses_ = 0;
  int buttonEvents_ = 0;
  int teamsPresses_ = 0;
  int polls_ = 0;
};

}  // namespace hushbox
