#pragma once

#include <vector>

#include "platform/Workspace.h"
#include "platform/linux/accessibility/AtspiSnapshot.h"
#include "platform/linux/accessibility/TeamsApplication.h"

namespace hushbox {

/// The running applications as far as the accessibility bus knows them: Teams, if anything of it is
/// there, under the identifier that it has elsewhere. Main thread only.
///
/// Teams is listed once, with the process of the document that comes first. Other programs are not
/// listed. A frozen program with a document of Teams stays listed until it has exited.
class AtspiWorkspace final : public Workspace {
 public:
  AtspiWorkspace(TeamsApplication& teams, AtspiSnapshot& snapshot)
      : teams_(teams), snapshot_(snapshot) {}

  std::vector<RunningApplication> runningApplications() override;

 private:
  TeamsApplication& teams_;
  AtspiSnapshot& snapshot_;
};

}  // namespace hushbox
