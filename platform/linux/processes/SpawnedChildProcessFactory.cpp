#include "platform/linux/processes/SpawnedChildProcessFactory.h"

#include <utility>

#include "platform/linux/processes/SpawnedChildProcess.h"

namespace hushbox {

SpawnedChildProcessFactory::SpawnedChildProcessFactory(ChildProcessRules rules)
    : rules_(std::make_shared<const ChildProcessRules>(std::move(rules))) {}

std::unique_ptr<ChildProcess> SpawnedChildProcessFactory::make() {
  return std::make_unique<SpawnedChildProcess>(rules_);
}

void SpawnedChildProcessFactory::endAll() {
  eventfd_write(rules_->ending.get(), 1);
}

}  // namespace hushbox
