#pragma once

namespace hushbox {

/// Whether the user's session starts this program at login. The platform keeps the registration.
/// Main thread only.
class LoginItem {
 public:
  /// The figures of the service-management interface.
  enum class Status { notRegistered = 0, enabled = 1, requiresApproval = 2, notFound = 3 };

  virtual ~LoginItem() = default;

  /// The registration as the system sees it now; read afresh each time.
  virtual Status status() = 0;

  /// False when the system refused.
  virtual bool registerItem() = 0;
  virtual bool unregisterItem() = 0;
};

}  // namespace hushbox
