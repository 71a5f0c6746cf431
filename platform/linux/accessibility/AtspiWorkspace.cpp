#include "platform/linux/accessibility/AtspiWorkspace.h"

namespace hushbox {

std::vector<RunningApplication> AtspiWorkspace::runningApplications() {
  reading_.begin();
  if (!teams_.isRunning()) return {};
  return {{.bundleIdentifier = "com.microsoft.teams2",
           .processIdentifier = teams_.surfaces().front()->processIdentifier}};
}

}  // namespace hushbox
