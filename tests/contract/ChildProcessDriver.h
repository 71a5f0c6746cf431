#pragma once

#include <string>
#include <vector>

#include "platform/ChildProcess.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a factory of child processes, which need no main loop to run.
class ChildProcessDriver : public ContractDriver {
 public:
  virtual ChildProcessFactory& factory() = 0;

  /// Sets what the program at `path` prints for these arguments, on a platform without real
  /// programs; does nothing on others.
  virtual void script([[maybe_unused]] const std::string& path,
                      [[maybe_unused]] const std::vector<std::string>& arguments,
                      [[maybe_unused]] const std::string& output) {}
};

}  // namespace hushbox
