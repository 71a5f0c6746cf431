#include "platform/linux/session/SingleInstance.h"

#include <string>
#include <utility>
#include <vector>

#include "platform/linux/bus/SessionBusAddress.h"
#include "support/BundleIdentifier.h"

namespace hushbox {
namespace {

constexpr std::chrono::milliseconds wait{1000};

// Flag and answer of the bus's RequestName, from its documentation.
constexpr guint32 doNotQueue = 4;
constexpr guint32 nameExists = 3;

}  // namespace

SingleInstance::SingleInstance() {
  const std::string address = sessionBusAddress();
  if (address.empty() || !connection_.open(address, wait)) return;
  const BusObject bus{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
  const std::string name(bundleIdentifier);
  std::vector<BusCall> calls;
  calls.push_back({bus, "org.freedesktop.DBus", "RequestName", "(u)", wait,
                   takeArguments(g_variant_new("(su)", name.c_str(), doNotQueue))});
  const BusReply reply = std::move(connection_.ask(std::move(calls)).front());
  if (!reply) return;
  guint32 answer = 0;
  g_variant_get(reply.value.get(), "(u)", &answer);
  first_ = answer != nameExists;
}

}  // namespace hushbox
