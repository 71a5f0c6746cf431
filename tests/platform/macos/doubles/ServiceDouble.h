#pragma once

namespace hushbox::doubles {

/// The login item's status: 0 not registered, 1 enabled, 2 requires approval, 3 not found, which it
/// is at first.
void setServiceStatus(int status);
int serviceStatus();

/// Registering, and taking the registration back, fail from now on.
void refuseServiceChanges();

void resetService();

}  // namespace hushbox::doubles
