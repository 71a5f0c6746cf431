#pragma once

#include <chrono>
#include <string>
#include <utility>

#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusObject.h"

/// The calls to the daemon of a bus.
namespace hushbox::bus_daemon {

using Timeout = std::chrono::milliseconds;

inline const BusObject object{"org.freedesktop.DBus", "/org/freedesktop/DBus"};

/// A method of the daemon with a reply of that type.
inline BusCall call(const char* method, const char* replyType, Timeout timeout,
                    VariantPointer arguments = nullptr) {
  return {object, "org.freedesktop.DBus", method, replyType, timeout, std::move(arguments)};
}

/// All names on the bus. The reply is "(as)".
inline BusCall names(Timeout timeout) {
  return call("ListNames", "(as)", timeout);
}

/// The unique name of the program that owns the name. The reply is "(s)".
inline BusCall ownerOf(const std::string& name, Timeout timeout) {
  return call("GetNameOwner", "(s)", timeout, takeArguments(g_variant_new("(s)", name.c_str())));
}

/// The process of the program that owns the name. The reply is "(u)".
inline BusCall processOf(const std::string& name, Timeout timeout) {
  return call("GetConnectionUnixProcessID", "(u)", timeout,
              takeArguments(g_variant_new("(s)", name.c_str())));
}

}  // namespace hushbox::bus_daemon
