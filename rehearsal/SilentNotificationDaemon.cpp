#include "rehearsal/SilentNotificationDaemon.h"

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr guint32 becamePrimaryOwner = 1;
constexpr guint32 doNotQueue = 4;

}  // namespace

SilentNotificationDaemon::SilentNotificationDaemon(const std::string& busAddress)
    : bus_(busAddress) {
  {
    // Publishes the members to GDBus's thread, visibly to ThreadSanitizer.
    const std::scoped_lock lock(mutex_);
    filter_ = g_dbus_connection_add_filter(bus_.get(), onMessage, this, nullptr);
  }
  const Variant reply =
      bus_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                "RequestName", g_variant_new("(su)", "org.freedesktop.Notifications", doNotQueue));
  guint32 result = 0;
  g_variant_get(reply.get(), "(u)", &result);
  if (result != becamePrimaryOwner) throw DeskError("a notification daemon is already running");
}

SilentNotificationDaemon::~SilentNotificationDaemon() {
  // Close first: removing a filter does not wait for a call of it that is still running.
  g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
  g_dbus_connection_remove_filter(bus_.get(), filter_);
  const std::scoped_lock lock(mutex_);
}

int SilentNotificationDaemon::calls() const {
  const std::scoped_lock lock(mutex_);
  return calls_;
}

GDBusMessage* SilentNotificationDaemon::onMessage(GDBusConnection*, GDBusMessage* message,
                                                  gboolean incoming, gpointer self) {
  const bool call =
      incoming && g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL;
  if (!call) return message;
  auto* daemon = static_cast<SilentNotificationDaemon*>(self);
  {
    const std::scoped_lock lock(daemon->mutex_);
    ++daemon->calls_;
  }
  wakeWaiters();
  g_object_unref(message);
  return nullptr;
}

}  // namespace hushbox::rehearsal
