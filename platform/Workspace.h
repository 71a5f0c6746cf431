#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace hushbox {

/// A running application.
struct RunningApplication {
  /// Such as "com.microsoft.teams2"; absent if the application has none.
  std::optional<std::string> bundleIdentifier;
  std::int32_t processIdentifier = 0;
};

/// The user's running applications. Main thread only.
class Workspace {
 public:
  virtual ~Workspace() = default;

  /// Returns the running applications in the platform's order; empty if they cannot be listed. On
  /// Linux, where Teams is a web page, the list holds only the browser that shows it, under the
  /// bundle identifier of Teams.
  virtual std::vector<RunningApplication> runningApplications() = 0;
};

}  // namespace hushbox
