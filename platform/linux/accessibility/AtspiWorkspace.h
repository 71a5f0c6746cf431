#pragma once

#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/accessibility/AtspiReading.h"
#include "platform/linux/accessibility/AtspiTeams.h"

namespace hushbox {

/// The running applications as far as the accessibility bus knows them: Teams, if there is anything
/// of it, under the identifier that Teams has elsewhere. Main thread only.
///
/// Teams is listed once, with the process of what is looked at first. Programs that are not Teams
/// are not listed. A frozen program that was known to show Teams stays listed until it is gone.
class AtspiWorkspace final : public Workspace {
 public:
  AtspiWorkspace(AtspiTeams& teams, AtspiReading& reading) : teams_(teams), reading_(reading) {}

  std::vector<RunningApplication> runningApplications() override;

 private:
  AtspiTeams& teams_;
  AtspiReading& reading_;
};

}  // namespace hushbox
