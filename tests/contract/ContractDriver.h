#pragma once

#include <functional>

#include "platform/Time.h"

namespace hushbox {

/// What every contract's driver can do: let the platform under test run.
///
/// A driver is made afresh for each case and owns the platform under test. What it cannot do makes
/// the case fail, by an exception or a fatal failure of its own.
class ContractDriver {
 public:
  virtual ~ContractDriver() = default;

  /// Runs the main loop until the condition holds, looking at it between turns; false when it does
  /// not hold after `limit`.
  virtual bool waitFor(const std::function<bool()>& condition, TimeInterval limit) = 0;

  /// The same, waiting as long as a slow machine may need.
  bool waitFor(const std::function<bool()>& condition) {
    return waitFor(condition, TimeInterval(30));
  }

  /// Runs the main loop for so long: to see that something does not happen.
  void letPass(TimeInterval span) {
    waitFor([] { return false; }, span);
  }
};

}  // namespace hushbox
