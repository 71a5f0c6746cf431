#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/Workspace.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// The running applications as a list. Journal line: "applications: 501 502".
class SimulatedWorkspace final : public Workspace {
 public:
  SimulatedWorkspace(Journal& journal, const SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  /// Adds an application at `place` in the list, or else at its end.
  void launch(RunningApplication application, std::optional<std::size_t> place = std::nullopt);
  void quit(std::int32_t processIdentifier);

  std::vector<RunningApplication> runningApplications() override;

 private:
  Journal& journal_;
  const SimulatedMainLoop& loop_;
  std::vector<RunningApplication> applications_;
};

}  // namespace hushbox
