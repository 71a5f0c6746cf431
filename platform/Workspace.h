#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace hushbox {

/// An application that the user has running.
struct RunningApplication {
  std::optional<std::string> bundleIdentifier;
  std::int32_t processIdentifier = 0;
};

/// The user's running applications. Main thread only.
class Workspace {
 public:
  virtual ~Workspace() = default;

  /// The running applications in the platform's own order; empty when it cannot be told.
  virtual std::vector<RunningApplication> runningApplications() = 0;
};

}  // namespace hushbox
