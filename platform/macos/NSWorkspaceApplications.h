#pragma once

#include "platform/Workspace.h"

namespace hushbox {

/// The user's running applications as NSWorkspace lists them. Main thread only. The list changes
/// only while the main run loop runs.
class NSWorkspaceApplications final : public Workspace {
 public:
  std::vector<RunningApplication> runningApplications() override;
};

}  // namespace hushbox
