#pragma once

namespace hushbox::doubles {

/// The login item's status: 0 not registered, 1 enabled, 2 requires approval, 3 not found.
/// Initially 3, as in a fresh installation.
void setServiceStatus(int status);
int serviceStatus();

/// From now on registering and unregistering fail.
void refuseServiceChanges();

void resetService();

}  // namespace hushbox::doubles
