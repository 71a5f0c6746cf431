#pragma once

#include <functional>
#include <string>

namespace hushbox::rehearsal {

/// Runs the steps of a rehearsal in order and prints each one with its result to standard output.
class StepReporter {
 public:
  /// Prints the title, runs the step and prints the text it returns. A step fails by throwing;
  /// the exception's message is printed instead. After a failure all further steps are skipped.
  void run(const std::string& title, const std::function<std::string()>& step);

  /// Prints the closing line, such as "21 steps passed, 0 failed."
  void printSummary() const;

  int failed() const { return failed_; }

 private:
  int passed_ = 0;
  int failed_ = 0;
  int skipped_ = 0;
};

}  // namespace hushbox::rehearsal
