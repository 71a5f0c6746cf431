#pragma once

#include <memory>

#include "platform/ChildProcess.h"
#include "platform/linux/processes/ChildProcessRules.h"

namespace hushbox {

/// Makes child processes by posix_spawn. Any thread.
///
/// A child may misbehave in any way and still costs no more than its limits: one that exceeds them
/// is killed together with its process group, and its output counts as none.
class SpawnedChildProcessFactory final : public ChildProcessFactory {
 public:
  explicit SpawnedChildProcessFactory(ChildProcessRules rules);

  std::unique_ptr<ChildProcess> make() override;

  /// For the program's end: takes every child as having exceeded its limits, so that nobody waits
  /// for one any longer; later ones cannot be launched.
  void endAll();

 private:
  std::shared_ptr<const ChildProcessRules> rules_;
};

}  // namespace hushbox
