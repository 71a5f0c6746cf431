#pragma once

#include "platform/Workspace.h"

namespace hushbox {

/// The user's running applications as NSWorkspace lists them. Main thread only; the list is brought
/// up to date by the main run loop.
class NSWorkspaceApplications final : public Workspace {
 public:
  std::vector<RunningApplication> runningApplications() override;
};

}  // namespace hushbox
