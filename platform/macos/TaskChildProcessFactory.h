#pragma once

#include "platform/ChildProcess.h"

namespace hushbox {

/// Creates child processes that NSTask runs. Any thread.
class TaskChildProcessFactory final : public ChildProcessFactory {
 public:
  std::unique_ptr<ChildProcess> make() override;
};

}  // namespace hushbox
