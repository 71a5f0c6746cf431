#include "rehearsal/AccessibilityBus.h"

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr const char* launcher = "org.a11y.Bus";
constexpr const char* launcherPath = "/org/a11y/bus";
constexpr const char* registry = "org.a11y.atspi.Registry";
constexpr const char* rootPath = "/org/a11y/atspi/accessible/root";
constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* properties = "org.freedesktop.DBus.Properties";

std::string nameOf(const BusConnection& bus, const char* application, const char* path) {
  const Variant reply = bus.call(application, path, properties, "Get",
                                 g_variant_new("(ss)", accessible, "Name"), Milliseconds{1000});
  GVariant* boxed = nullptr;
  g_variant_get(reply.get(), "(v)", &boxed);
  const Variant value(boxed);
  return g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING)
             ? g_variant_get_string(value.get(), nullptr)
             : "";
}

}  // namespace

AccessibilityBus::AccessibilityBus(const Session& session) : bus_(session.busAddress()) {}

void AccessibilityBus::setEnabled(bool enabled) {
  bus_.call(launcher, launcherPath, properties, "Set",
            g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled", g_variant_new_boolean(enabled)));
}

bool AccessibilityBus::isEnabled() const {
  const Variant reply = bus_.call(launcher, launcherPath, properties, "Get",
                                  g_variant_new("(ss)", "org.a11y.Status", "IsEnabled"));
  GVariant* boxed = nullptr;
  g_variant_get(reply.get(), "(v)", &boxed);
  return g_variant_get_boolean(Variant(boxed).get());
}

std::string AccessibilityBus::address() const {
  const Variant reply = bus_.call(launcher, launcherPath, launcher, "GetAddress", nullptr);
  const char* address = "";
  g_variant_get(reply.get(), "(&s)", &address);
  return address;
}

std::vector<std::string> AccessibilityBus::applications() const {
  std::vector<std::string> names;
  try {
    const BusConnection bus(address());
    const Variant reply = bus.call(registry, rootPath, accessible, "GetChildren", nullptr);
    GVariantIter* children = nullptr;
    g_variant_get(reply.get(), "(a(so))", &children);
    const std::unique_ptr<GVariantIter, decltype(&g_variant_iter_free)> owner(children,
                                                                              g_variant_iter_free);
    const char* application = nullptr;
    const char* path = nullptr;
    while (g_variant_iter_next(children, "(&s&o)", &application, &path)) {
      names.push_back(nameOf(bus, application, path));
    }
  } catch (const DeskError&) {
    // An application or the bus may exit between two calls.
  }
  return names;
}

void AccessibilityBus::waitForApplication(const std::string& name, Milliseconds deadline) const {
  const auto present = [&] {
    const std::vector<std::string> names = applications();
    return std::find(names.begin(), names.end(), name) != names.end();
  };
  waitUntil(present, deadline, "the application " + name + " on the accessibility bus");
}

void AccessibilityBus::kill() {
  const BusConnection bus(address());
  const int registryProcess = bus.processOf(registry);
  const int busProcess = bus.processOf("org.freedesktop.DBus");
  const int launcherProcess = bus_.processOf(launcher);
  for (const int process : {launcherProcess, busProcess, registryProcess}) {
    if (process > 1) ::kill(process, SIGKILL);
  }
  waitUntil([&] { return !bus_.hasOwner(launcher); }, serverTimeout,
            "the accessibility bus to exit");
}

}  // namespace hushbox::rehearsal
