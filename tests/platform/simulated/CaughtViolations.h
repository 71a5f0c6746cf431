#pragma once

#include <string>
#include <vector>

#include "platform/simulated/Violation.h"

namespace hushbox {

/// Records the violations reported during its lifetime, which then do not abort the program.
class CaughtViolations {
 public:
  CaughtViolations()
      : before_(setViolationHandler(
            [this](const std::string& message) { messages_.push_back(message); })) {}
  ~CaughtViolations() { setViolationHandler(before_); }
  CaughtViolations(const CaughtViolations&) = delete;
  CaughtViolations& operator=(const CaughtViolations&) = delete;

  const std::vector<std::string>& messages() const { return messages_; }

 private:
  ViolationHandler before_;
  std::vector<std::string> messages_;
};

}  // namespace hushbox
