#include "platform/linux/accessibility/AtspiWorkspace.h"

namespace hushbox {

std::vector<RunningApplication> AtspiWorkspace::runningApplications() {
  snapshot_.begin();
  if (!teams_.isRunning()) return {};
  return {{.bundleIdentifier = "com.microsoft.teams2",
           .processIdentifier = teams_.documents().front()->processIdentifier}};
}

}  // namespace hushbox
