#include "platform/linux/bus/SessionBusAddress.h"

#include <gio/gio.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

namespace hushbox {

std::string sessionBusAddress() {
  if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address && *address) {
    return address;
  }
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (!runtime || !*runtime) return {};
  const auto socket = std::filesystem::path(runtime) / "bus";
  std::error_code error;
  if (!std::filesystem::exists(socket, error)) return {};
  const std::unique_ptr<char, decltype(&g_free)> escaped(
      g_dbus_address_escape_value(socket.c_str()), g_free);
  return std::string("unix:path=") + escaped.get();
}

}  // namespace hushbox
