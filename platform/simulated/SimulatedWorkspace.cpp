#include "platform/simulated/SimulatedWorkspace.h"

#include <algorithm>
#include <string>
#include <utility>

namespace hushbox {

void SimulatedWorkspace::launch(RunningApplication application, std::optional<std::size_t> place) {
  const std::size_t at = std::min(place.value_or(applications_.size()), applications_.size());
  applications_.insert(applications_.begin() + static_cast<std::ptrdiff_t>(at),
                       std::move(application));
}

void SimulatedWorkspace::quit(std::int32_t processIdentifier) {
  std::erase_if(applications_, [processIdentifier](const RunningApplication& application) {
    return application.processIdentifier == processIdentifier;
  });
}

std::vector<RunningApplication> SimulatedWorkspace::runningApplications() {
  loop_.requireMainThread("runningApplications");
  std::string line = "applications:";
  for (const RunningApplication& application : applications_) {
    line += ' ' + std::to_string(application.processIdentifier);
  }
  journal_.add("workspace", line);
  return applications_;
}

}  // namespace hushbox
