#include "platform/linux/SpawnedChildProcesses.h"

#include <utility>

#include "platform/linux/SpawnedChildProcess.h"

namespace hushbox {

SpawnedChildProcesses::SpawnedChildProcesses(ChildProcessRules rules)
    : rules_(std::make_shared<const ChildProcessRules>(std::move(rules))) {}

std::unique_ptr<ChildProcess> SpawnedChildProcesses::make() {
  return std::make_unique<SpawnedChildProcess>(rules_);
}

void SpawnedChildProcesses::endAll() {
  eventfd_write(rules_->ending.get(), 1);
}

}  // namespace hushbox
