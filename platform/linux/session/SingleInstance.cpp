#include "platform/linux/session/SingleInstance.h"

#include <string>
#include <utility>

#include "platform/linux/bus/BusDaemonCalls.h"
#include "support/BundleIdentifier.h"

namespace hushbox {
namespace {

// A flag and a reply code of RequestName, from the documentation of org.freedesktop.DBus.
constexpr guint32 doNotQueue = 4;
constexpr guint32 nameExists = 3;

}  // namespace

SingleInstance::SingleInstance(SessionBusConnection& bus) : bus_(bus) {
  noteReply(bus.callAndWait(requestName()));
}

void SingleInstance::keep(std::function<void()> displaced) {
  displaced_ = std::move(displaced);
  const auto connected = [this](GDBusConnection*) {
    if (ownsName_) return;
    bus_.call(requestName(), lifetime_.weakly([this](const BusReply& reply) {
      noteReply(reply);
      if (!isFirst_) displaced_();
    }));
  };
  busSubscription_ = bus_.observe(connected, [this](const std::string&) { ownsName_ = false; });
}

BusCall SingleInstance::requestName() {
  return bus_daemon::call(
      "RequestName", "(u)", timeout,
      takeArguments(g_variant_new("(su)", std::string(bundleIdentifier).c_str(), doNotQueue)));
}

void SingleInstance::noteReply(const BusReply& reply) {
  if (!reply) return;
  guint32 code = 0;
  g_variant_get(reply.value.get(), "(u)", &code);
  isFirst_ = code != nameExists;
  ownsName_ = isFirst_;
}

}  // namespace hushbox
