#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "battery/BatteryReading.h"
#include "platform/RegistrationToken.h"
#include "support/ChangePublisher.h"
#include "support/Published.h"

namespace hushbox {

/// Publishes the level and charging state of the headset's battery. Reads them when created, every
/// 60 seconds, and on demand.
///
/// Main thread only, except that the power-management tool is run and read on a utility thread,
/// where it may block. A reading in progress keeps the monitor alive until the tool has finished.
/// If that was the last reference, the monitor is destroyed on that thread and publishes nothing.
class BatteryMonitor : public std::enable_shared_from_this<BatteryMonitor> {
  /// Makes `make` the only way to create one: the first reading already needs a shared owner.
  struct Private {
    explicit Private() = default;
  };

 public:
  /// Creates a monitor of the first accessory whose line in the tool's report contains `nameMatch`,
  /// starts the first reading and schedules the timer.
  static std::shared_ptr<BatteryMonitor> make(std::string nameMatch);

  BatteryMonitor(Private, std::string nameMatch);

  /// Announces the assignment of each of the two members below before it happens: twice per
  /// reading, even if the values stay equal.
  ChangePublisher objectWillChange;

  /// In percent; empty before the first reading and after a failed one.
  std::optional<std::int64_t> level() const { return level_.get(); }

  /// False before the first reading and after a failed one.
  bool isCharging() const { return isCharging_.get(); }

  /// Starts a reading and returns at once. `completion`, which may be empty, is called on the main
  /// thread after the members were assigned, whether or not the reading succeeded, but not after
  /// the monitor is destroyed. Readings may overlap; the last one to finish wins.
  ///
  /// Two readings may run at once. While both do, as when the tool hangs, one more waits until one
  /// of them ends, and serves every refresh requested until then.
  void refresh(std::function<void()> completion);

 private:
  static std::optional<BatteryReading> read(const std::string& nameMatch);
  using Completions = std::vector<std::function<void()>>;

  void startReading(Completions completions);
  void finishReading(const std::optional<BatteryReading>& reading, const Completions& completions);
  void publish(const std::optional<BatteryReading>& reading);

  Published<std::optional<std::int64_t>> level_{objectWillChange, std::nullopt};
  Published<bool> isCharging_{objectWillChange, false};
  std::string nameMatch_;
  RegistrationToken timer_;
  int runningReadings_ = 0;
  /// Whether a reading waits, and the completions that it will call.
  bool isReadingWaiting_ = false;
  Completions waitingCompletions_;
};

}  // namespace hushbox
