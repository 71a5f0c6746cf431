#pragma once

#include <string>
#include <vector>

#include "platform/simulated/Violation.h"

namespace hushbox {

/// Keeps the violations that are reported during its life, which then do not end the program.
class CaughtViolations {
 public:
  CaughtViolations()
      : before_(setViolationHandler(
            [this](const std::string& sentence) { sentences_.push_back(sentence); })) {}
  ~CaughtViolations() { setViolationHandler(before_); }
  CaughtViolations(const CaughtViolations&) = delete;
  CaughtViolations& operator=(const CaughtViolations&) = delete;

  const std::vector<std::string>& sentences() const { return sentences_; }

 private:
  ViolationHandler before_;
  std::vector<std::string> sentences_;
};

}  // namespace hushbox
