#include <gio/gio.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/power-report/AccessoryBattery.h"

/// Prints the batteries of the accessories that UPower knows, one per line, for Hushbox's battery
/// reading. Ignores its arguments. Exits with 0 when UPower replied, else with 1 and no output.
namespace {

using namespace hushbox;

/// For the whole program. UPower replies within milliseconds, but a call starts when the machine is
/// busiest, and a reading that fails then costs the warning of a low battery. Less than the ten
/// seconds after which Hushbox kills this program.
constexpr unsigned timeoutSeconds = 5;

constexpr const char* upower = "org.freedesktop.UPower";

/// Without a timeout of its own: the program has one.
VariantPointer call(GDBusConnection* bus, const char* path, const char* interface,
                    const char* method, GVariant* arguments, const char* replyType) {
  return VariantPointer(g_dbus_connection_call_sync(
      bus, upower, path, interface, method, arguments, G_VARIANT_TYPE(replyType),
      G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, nullptr));
}

std::string lineFor(GDBusConnection* bus, const char* device) {
  const auto reply = call(bus, device, "org.freedesktop.DBus.Properties", "GetAll",
                          g_variant_new("(s)", "org.freedesktop.UPower.Device"), "(a{sv})");
  // The device was unplugged meanwhile.
  if (!reply) return {};
  const VariantPointer properties(g_variant_get_child_value(reply.get(), 0));
  const auto battery = AccessoryBattery::fromProperties(properties.get());
  return battery ? battery->reportLine() : std::string();
}

}  // namespace

int main() {
  // Whatever hangs, the alarm ends the program before it has printed anything.
  std::signal(SIGALRM, [](int) { _exit(1); });
  alarm(timeoutSeconds);

  const ConnectionPointer bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
  if (!bus) return 1;
  const auto devices =
      call(bus.get(), "/org/freedesktop/UPower", upower, "EnumerateDevices", nullptr, "(ao)");
  if (!devices) return 1;

  std::string report;
  const VariantPointer paths(g_variant_get_child_value(devices.get(), 0));
  GVariantIter each;
  g_variant_iter_init(&each, paths.get());
  for (const char* path = nullptr; g_variant_iter_next(&each, "&o", &path);)
    report += lineFor(bus.get(), path);
  std::fwrite(report.data(), 1, report.size(), stdout);
  return std::fflush(stdout) == 0 ? 0 : 1;
}
