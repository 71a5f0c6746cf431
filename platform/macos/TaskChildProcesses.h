#pragma once

#include "platform/ChildProcess.h"

namespace hushbox {

/// Makes child processes that NSTask runs. Any thread.
class TaskChildProcesses final : public ChildProcesses {
 public:
  std::unique_ptr<ChildProcess> make() override;
};

}  // namespace hushbox
