#pragma once

#include <string>

namespace hushbox {

/// The address of the session bus: DBUS_SESSION_BUS_ADDRESS, else the socket in XDG_RUNTIME_DIR.
/// Empty when there is neither; GLib's own look-up would then start a bus that no other program
/// uses.
std::string sessionBusAddress();

}  // namespace hushbox
