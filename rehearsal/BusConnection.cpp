#include "rehearsal/BusConnection.h"

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

std::string takeText(GError* error) {
  std::string text = error->message;
  g_error_free(error);
  return text;
}

}  // namespace

BusConnection::BusConnection(const std::string& address) {
  GError* error = nullptr;
  connection_ = g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, &error);
  if (!connection_) throw DeskError("cannot connect to the bus: " + takeText(error));
  g_dbus_connection_set_exit_on_close(connection_, FALSE);
}

BusConnection::~BusConnection() {
  g_dbus_connection_close_sync(connection_, nullptr, nullptr);
  g_object_unref(connection_);
}

Variant BusConnection::call(const std::string& name, const std::string& path,
                            const std::string& interface, const std::string& method,
                            GVariant* arguments, Milliseconds deadline) const {
  GError* error = nullptr;
  GVariant* reply = g_dbus_connection_call_sync(
      connection_, name.c_str(), path.c_str(), interface.c_str(), method.c_str(), arguments,
      nullptr, G_DBUS_CALL_FLAGS_NONE, static_cast<int>(deadline.count()), nullptr, &error);
  if (!reply) throw DeskError(interface + "." + method + " failed: " + takeText(error));
  return Variant(reply);
}

bool BusConnection::hasOwner(const std::string& name) const {
  const Variant reply =
      call(busName, busPath, busName, "NameHasOwner", g_variant_new("(s)", name.c_str()));
  gboolean owned = FALSE;
  g_variant_get(reply.get(), "(b)", &owned);
  return owned;
}

int BusConnection::processOf(const std::string& name) const {
  if (!hasOwner(name)) return -1;
  const Variant reply = call(busName, busPath, busName, "GetConnectionUnixProcessID",
                             g_variant_new("(s)", name.c_str()));
  guint32 process = 0;
  g_variant_get(reply.get(), "(u)", &process);
  return static_cast<int>(process);
}

}  // namespace hushbox::rehearsal
