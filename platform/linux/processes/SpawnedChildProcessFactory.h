#pragma once

#include <memory>

#include "platform/ChildProcess.h"
#include "platform/linux/processes/ChildProcessRules.h"

namespace hushbox {

/// Makes child processes with posix_spawn. Any thread.
///
/// A child that exceeds the limits of the rules is killed together with its process group, and its
/// output is discarded.
class SpawnedChildProcessFactory final : public ChildProcessFactory {
 public:
  explicit SpawnedChildProcessFactory(ChildProcessRules rules);

  std::unique_ptr<ChildProcess> make() override;

  /// For the end of the program: treats every child as having exceeded its limits, so that waiting
  /// for it ends at once. Later children cannot be launched.
  void endAll();

 private:
  std::shared_ptr<const ChildProcessRules> rules_;
};

}  // namespace hushbox
