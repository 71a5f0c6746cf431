#include "benchmarks/BusTraffic.h"

#include <algorithm>

namespace hushbox {
namespace {

constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* busPath = "/org/freedesktop/DBus";

std::vector<std::string> namesOf(const rehearsal::BusConnection& bus, int process) {
  const rehearsal::Variant reply = bus.call(busName, busPath, busName, "ListNames", nullptr);
  GVariantIter* names = nullptr;
  g_variant_get(reply.get(), "(as)", &names);
  std::vector<std::string> found;
  const char* name = nullptr;
  while (g_variant_iter_next(names, "&s", &name)) {
    if (*name == ':' && bus.processOf(name) == process) found.emplace_back(name);
  }
  g_variant_iter_free(names);
  return found;
}

}  // namespace

BusTraffic::BusTraffic(const std::string& busAddress, int process)
    : bus_(busAddress), senders_(namesOf(bus_, process)) {
  filter_ = g_dbus_connection_add_filter(bus_.get(), onMessage, this, nullptr);
  bus_.call(busName, busPath, "org.freedesktop.DBus.Monitoring", "BecomeMonitor",
            g_variant_new("(asu)", nullptr, 0));
}

BusTraffic::~BusTraffic() {
  g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
  g_dbus_connection_remove_filter(bus_.get(), filter_);
}

std::map<std::string, unsigned long> BusTraffic::messages() const {
  const std::scoped_lock lock(mutex_);
  return messages_;
}

GDBusMessage* BusTraffic::onMessage(GDBusConnection*, GDBusMessage* message, gboolean incoming,
                                    gpointer self) {
  if (!incoming) return message;
  auto* traffic = static_cast<BusTraffic*>(self);
  const char* sender = g_dbus_message_get_sender(message);
  if (sender && std::ranges::find(traffic->senders_, sender) != traffic->senders_.end()) {
    const char* destination = g_dbus_message_get_destination(message);
    const std::scoped_lock lock(traffic->mutex_);
    ++traffic->messages_[destination ? destination : "all"];
  }
  const GDBusMessageType type = g_dbus_message_get_message_type(message);
  if (type == G_DBUS_MESSAGE_TYPE_METHOD_RETURN || type == G_DBUS_MESSAGE_TYPE_ERROR) {
    return message;
  }
  // A monitor receives calls that are addressed to others and must not reply to them.
  g_object_unref(message);
  return nullptr;
}

}  // namespace hushbox
