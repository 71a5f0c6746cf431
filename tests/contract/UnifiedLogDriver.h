#pragma once

#include <string>
#include <vector>

#include "platform/UnifiedLog.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a log and reads its records back.
class UnifiedLogDriver : public ContractDriver {
 public:
  virtual UnifiedLog& log() = 0;

  /// Returns the records so far, each as the text that a reader of the log sees.
  virtual std::vector<std::string> records() = 0;
};

}  // namespace hushbox
