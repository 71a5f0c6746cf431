#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "coordinator/MuteCoordinator.h"
#include "platform/simulated/SimulatedDesk.h"
#include "tests/scenarios/CallEvent.h"
#include "tests/scenarios/CallState.h"

namespace hushbox {

/// The program on a simulated desk, driven by the events of a history.
class ProgramOnDesk {
 public:
  /// What runs first among the events that are due at the same time.
  enum class Ties { firstScheduledFirst, lastScheduledFirst };

  /// Called after each turn of the main loop, with that turn's log records as "category: text". The
  /// battery's notifications are left out.
  using TurnListener =
      std::function<void(std::chrono::nanoseconds now, const std::vector<std::string>& records)>;

  explicit ProgramOnDesk(Ties ties = Ties::firstScheduledFirst);

  void apply(const CallEvent& event);

  /// Returns the state now. Clears the records.
  CallState takeState();

  void setTurnListener(TurnListener listener) { turnListener_ = std::move(listener); }

  /// Appends everything about the program and the desk on which the future depends and which
  /// `CallState` does not show. Times are relative to now.
  void appendHiddenState(std::string& to) const;

 private:
  void pass(std::chrono::nanoseconds time);
  void applyToDevice(const CallEvent& event);
  void allow(bool& operation, bool allowed);
  void takeRecords(std::vector<std::string>& to);

  SimulatedDesk desk_;
  /// 0 without a device.
  AudioObjectID device_ = 0;
  bool isReadable_ = true;
  bool isWritable_ = true;
  bool isUseReadable_ = true;
  std::size_t announcements_ = 0;
  std::size_t recordsSeen_ = 0;
  /// Records since the last call of `takeState`.
  std::vector<std::string> records_;
  TurnListener turnListener_;
  std::unique_ptr<MuteCoordinator> coordinator_;
  Subscription subscription_;
};

}  // namespace hushbox
