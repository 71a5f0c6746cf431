#pragma once

#include <string>
#include <vector>

#include "platform/UnifiedLog.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a log whose records can be read back.
class UnifiedLogDriver : public ContractDriver {
 public:
  virtual UnifiedLog& log() = 0;

  /// The records so far, one text each, in whatever form somebody who reads the log sees them.
  virtual std::vector<std::string> records() = 0;
};

}  // namespace hushbox
