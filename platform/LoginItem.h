#pragma once

namespace hushbox {

/// Starts this program when the user logs in. The operating system stores the registration. Main
/// thread only.
class LoginItem {
 public:
  /// The values of SMAppService.Status on macOS; other platforms use the first two only.
  enum class Status { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

  virtual ~LoginItem() = default;

  /// Reads the current registration from the system.
  virtual Status status() = 0;

  /// Registers this program. Returns false if the system refuses. Registering twice is fine.
  virtual bool registerItem() = 0;
  /// Removes the registration. Returns false if the system refuses.
  virtual bool unregisterItem() = 0;
};

}  // namespace hushbox
