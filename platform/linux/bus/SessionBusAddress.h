#pragma once

#include <string>

namespace hushbox {

/// Where the session bus is: DBUS_SESSION_BUS_ADDRESS, else the socket in XDG_RUNTIME_DIR. Empty
/// when there is neither. GLib's own look-up would start a bus that nobody else is on.
std::string sessionBusAddress();

}  // namespace hushbox
