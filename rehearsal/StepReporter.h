#pragma once

#include <functional>
#include <string>

namespace hushbox::rehearsal {

/// Tells a play on the desk line by line: what was done, and what was read back.
class StepReporter {
 public:
  /// Does one step and tells it. `act` returns what was read back, or throws DeskError when the
  /// step failed; every step after a failed one is told as not played.
  void step(const std::string& what, const std::function<std::string()>& act);

  /// How many steps went well and how many failed or were not played.
  int succeeded() const { return succeeded_; }
  int failed() const { return failed_; }

 private:
  int succeeded_ = 0;
  int failed_ = 0;
};

}  // namespace hushbox::rehearsal
