#pragma once

#include <string>
#include <vector>

#include "platform/ChildProcess.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives child processes, which need no main loop to run.
class ChildProcessDriver : public ContractDriver {
 public:
  virtual ChildProcessFactory& processes() = 0;

  /// Tells a platform without real programs what the real one at `path` would print for these
  /// arguments. Real platforms need not be told.
  virtual void script([[maybe_unused]] const std::string& path,
                      [[maybe_unused]] const std::vector<std::string>& arguments,
                      [[maybe_unused]] const std::string& output) {}
};

}  // namespace hushbox
