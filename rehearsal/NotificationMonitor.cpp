#include "rehearsal/NotificationMonitor.h"

#include <algorithm>

namespace hushbox::rehearsal {

namespace {

std::string textOf(const char* text) {
  return text ? text : "";
}

/// The caller's bus name and serial number together identify a call on the bus.
std::string keyOf(const char* caller, guint32 serial) {
  return textOf(caller) + " " + std::to_string(serial);
}

bool isNotify(GDBusMessage* message) {
  return g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL &&
         textOf(g_dbus_message_get_interface(message)) == "org.freedesktop.Notifications" &&
         textOf(g_dbus_message_get_member(message)) == "Notify" &&
         textOf(g_dbus_message_get_signature(message)) == "susssasa{sv}i";
}

bool isReply(GDBusMessage* message) {
  const GDBusMessageType type = g_dbus_message_get_message_type(message);
  return type == G_DBUS_MESSAGE_TYPE_METHOD_RETURN || type == G_DBUS_MESSAGE_TYPE_ERROR;
}

ShownNotification parse(GVariant* body) {
  ShownNotification notification;
  notification.when = std::chrono::steady_clock::now();
  const char* application = nullptr;
  const char* icon = nullptr;
  const char* title = nullptr;
  const char* text = nullptr;
  const char** actions = nullptr;
  GVariant* hints = nullptr;
  guint32 replaces = 0;
  gint32 timeout = 0;
  g_variant_get(body, "(&su&s&s&s^a&s@a{sv}i)", &application, &replaces, &icon, &title, &text,
                &actions, &hints, &timeout);
  notification.application = application;
  notification.replaces = replaces;
  notification.icon = icon;
  notification.title = title;
  notification.body = text;
  for (const char** action = actions; *action; ++action) notification.actions.emplace_back(*action);
  const char* sound = nullptr;
  if (g_variant_lookup(hints, "sound-name", "&s", &sound)) notification.soundName = sound;
  g_free(actions);
  g_variant_unref(hints);
  return notification;
}

}  // namespace

NotificationMonitor::NotificationMonitor(const std::string& busAddress) : bus_(busAddress) {
  {
    // Publishes the members to GDBus's thread, visibly to ThreadSanitizer.
    const std::scoped_lock lock(mutex_);
    filter_ = g_dbus_connection_add_filter(bus_.get(), onMessage, this, nullptr);
  }
  bus_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus.Monitoring",
            "BecomeMonitor", g_variant_new("(asu)", nullptr, 0));
}

NotificationMonitor::~NotificationMonitor() {
  // Close first: removing a filter does not wait for a call of it that is still running.
  g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
  g_dbus_connection_remove_filter(bus_.get(), filter_);
  const std::scoped_lock lock(mutex_);
}

GDBusMessage* NotificationMonitor::onMessage(GDBusConnection*, GDBusMessage* message,
                                             gboolean incoming, gpointer self) {
  if (!incoming) return message;
  auto* monitor = static_cast<NotificationMonitor*>(self);
  if (isNotify(message)) {
    monitor->recordCall(message);
  } else if (isReply(message)) {
    monitor->recordReply(message);
    return message;
  }
  // A monitor receives calls that are addressed to others and must not reply to them.
  g_object_unref(message);
  return nullptr;
}

void NotificationMonitor::recordCall(GDBusMessage* message) {
  const std::scoped_lock lock(mutex_);
  pendingCalls_[keyOf(g_dbus_message_get_sender(message), g_dbus_message_get_serial(message))] =
      notifications_.size();
  notifications_.push_back(parse(g_dbus_message_get_body(message)));
  wakeWaiters();
}

void NotificationMonitor::recordReply(GDBusMessage* message) {
  const std::scoped_lock lock(mutex_);
  const auto call = pendingCalls_.find(
      keyOf(g_dbus_message_get_destination(message), g_dbus_message_get_reply_serial(message)));
  if (call == pendingCalls_.end()) return;
  ShownNotification& notification = notifications_[call->second];
  pendingCalls_.erase(call);
  if (g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_ERROR) {
    notification.error = textOf(g_dbus_message_get_error_name(message));
  } else if (textOf(g_dbus_message_get_signature(message)) == "u") {
    guint32 id = 0;
    g_variant_get(g_dbus_message_get_body(message), "(u)", &id);
    notification.id = id;
  }
  wakeWaiters();
}

std::vector<ShownNotification> NotificationMonitor::notifications() const {
  const std::scoped_lock lock(mutex_);
  return notifications_;
}

std::vector<ShownNotification> NotificationMonitor::shown() const {
  std::vector<ShownNotification> all = notifications();
  std::erase_if(all, [](const ShownNotification& one) { return one.id == 0; });
  return all;
}

std::vector<ShownNotification> NotificationMonitor::waitForShown(std::size_t count,
                                                                 Milliseconds deadline) const {
  waitUntil([&] { return shown().size() >= count; }, deadline,
            std::to_string(count) + " notifications to be shown");
  return shown();
}

void NotificationMonitor::clear() {
  const std::scoped_lock lock(mutex_);
  notifications_.clear();
  pendingCalls_.clear();
}

}  // namespace hushbox::rehearsal
