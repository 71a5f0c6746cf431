#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "battery/BatteryReading.h"
#include "platform/RegistrationToken.h"
#include "support/ChangePublisher.h"
#include "support/Log.h"
#include "support/Published.h"

namespace hushbox {

/// Keeps the headset's battery state current: reads it when made, every 60 seconds, and on demand.
///
/// Main thread only, but for the reading itself, which blocks while the power-management tool runs
/// and therefore has a background thread to itself. It is shared so that a reading under way can
/// keep the monitor alive until it ends; if nobody else wants it by then, it goes there and then,
/// and nothing is published.
class BatteryMonitor : public std::enable_shared_from_this<BatteryMonitor> {
  /// Only `make` can make one: the first reading already needs a shared owner.
  struct Private {
    explicit Private() = default;
  };

 public:
  /// A monitor of the first accessory whose line of the tool's report contains `nameMatch`; its
  /// first reading is under way and its timer runs.
  static std::shared_ptr<BatteryMonitor> make(std::string nameMatch);

  BatteryMonitor(Private, std::string nameMatch);

  /// Announces each change of the two members below before it happens: with every reading that
  /// comes in, also of equal values.
  ChangePublisher objectWillChange;

  /// In percent; empty when the last reading failed or none has come in yet.
  std::optional<std::int64_t> level() const { return level_.get(); }

  /// False when the last reading failed.
  bool isCharging() const { return isCharging_.get(); }

  /// Starts a reading and returns at once. `completion`, which may be empty, is called when the
  /// members hold the new reading, failed ones included; never once the monitor is gone. Readings
  /// may overtake each other: the last to end wins.
  void refresh(std::function<void()> completion);

 private:
  static std::optional<BatteryReading> read(const std::string& nameMatch);
  void publish(const std::optional<BatteryReading>& reading);

  Published<std::optional<std::int64_t>> level_{objectWillChange, std::nullopt};
  Published<bool> isCharging_{objectWillChange, false};
  /// Nothing is recorded through it so far: a missing battery is no event.
  [[maybe_unused]] Log log_{"battery"};
  std::string nameMatch_;
  RegistrationToken timer_;
};

}  // namespace hushbox
