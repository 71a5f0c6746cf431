// What remains of a search for a meeting's microphone button without a library: one D-Bus call
// after another, depth first. "look" finds the button.

#include <gio/gio.h>

#include <cstring>

#include "benchmarks/baselines/Commands.h"

namespace hushbox::baselines {
namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr guint32 pushButton = 43;

class Client {
 public:
  Client() {
    GDBusConnection* const session = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    GVariant* const reply = g_dbus_connection_call_sync(
        session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr, nullptr,
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    const char* address = nullptr;
    g_variant_get(reply, "(&s)", &address);
    bus_ = g_dbus_connection_new_for_address_sync(
        address,
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    g_variant_unref(reply);
  }

  bool look() const { return find("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"); }

 private:
  GVariant* call(const char* name, const char* path, const char* interface, const char* method,
                 GVariant* arguments) const {
    return g_dbus_connection_call_sync(bus_, name, path, interface, method, arguments, nullptr,
                                       G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  }

  bool isButton(const char* name, const char* path) const {
    GVariant* const role = call(name, path, accessible, "GetRole", nullptr);
    if (!role) return false;
    guint32 number = 0;
    g_variant_get(role, "(u)", &number);
    g_variant_unref(role);
    if (number != pushButton) return false;
    GVariant* const reply = call(name, path, "org.freedesktop.DBus.Properties", "Get",
                                 g_variant_new("(ss)", accessible, "Name"));
    if (!reply) return false;
    GVariant* label = nullptr;
    g_variant_get(reply, "(v)", &label);
    const bool matches = std::strstr(g_variant_get_string(label, nullptr), "mic (");
    g_variant_unref(label);
    g_variant_unref(reply);
    return matches;
  }

  bool find(const char* name, const char* path) const {
    if (isButton(name, path)) return true;
    GVariant* const children = call(name, path, accessible, "GetChildren", nullptr);
    if (!children) return false;
    GVariantIter* each = nullptr;
    const char* childName = nullptr;
    const char* childPath = nullptr;
    g_variant_get(children, "(a(so))", &each);
    bool found = false;
    while (!found && g_variant_iter_next(each, "(&s&o)", &childName, &childPath))
      found = find(childName, childPath);
    g_variant_iter_free(each);
    g_variant_unref(children);
    return found;
  }

  GDBusConnection* bus_ = nullptr;
};

}  // namespace
}  // namespace hushbox::baselines

int main() {
  const hushbox::baselines::Client client;
  return hushbox::baselines::answerCommands(
      [&](const std::string&) { return hushbox::baselines::timed([&] { return client.look(); }); });
}
