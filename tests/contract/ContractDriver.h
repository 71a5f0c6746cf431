#pragma once

#include <functional>

#include "platform/Time.h"

namespace hushbox {

/// The base of the drivers, through which a contract controls the platform under test and its
/// environment.
///
/// Each case has a new driver, which owns the platform under test. A driver that fails to do what
/// it is asked fails the case, by an exception or a fatal failure.
class ContractDriver {
 public:
  virtual ~ContractDriver() = default;

  /// Runs the main loop until `condition` holds, checking it between turns. Returns false if it
  /// does not hold after `limit`.
  virtual bool waitFor(const std::function<bool()>& condition, TimeInterval limit) = 0;

  /// Does the same with a limit that is long enough for a slow machine.
  bool waitFor(const std::function<bool()>& condition) {
    return waitFor(condition, TimeInterval(30));
  }

  /// Runs the main loop for `span`, to check that something does not happen.
  void letPass(TimeInterval span) {
    waitFor([] { return false; }, span);
  }
};

}  // namespace hushbox
