// The least that a program like Hushbox does when it starts: connects to the session bus, the
// accessibility bus, the sound server and the display, asks for the sources, and registers an item
// with the panel. It says so on standard error and runs until it is ended.

#include <gio/gio.h>
#include <pulse/glib-mainloop.h>
#include <pulse/pulseaudio.h>
#include <xcb/xcb.h>

#include <cstdio>
#include <string>

namespace {

void onSource(pa_context*, const pa_source_info*, int isLast, void*) {
  if (isLast) std::fputs("Attached to nothing\n", stderr);
}

void onState(pa_context* context, void*) {
  if (pa_context_get_state(context) != PA_CONTEXT_READY) return;
  pa_operation_unref(pa_context_subscribe(context, PA_SUBSCRIPTION_MASK_SOURCE, nullptr, nullptr));
  pa_operation_unref(pa_context_get_source_info_list(context, onSource, nullptr));
}

GDBusConnection* connectTo(const char* address) {
  return g_dbus_connection_new_for_address_sync(
      address,
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, nullptr);
}

GVariant* call(GDBusConnection* bus, const char* name, const char* path, const char* interface,
               const char* method, GVariant* arguments) {
  return g_dbus_connection_call_sync(bus, name, path, interface, method, arguments, nullptr,
                                     G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
}

}  // namespace

int main() {
  GDBusConnection* const session = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  const std::string address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  GDBusConnection* const second = connectTo(address.c_str());
  GVariant* const reply =
      call(second, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr);
  const char* accessibility = nullptr;
  g_variant_get(reply, "(&s)", &accessibility);
  connectTo(accessibility);

  xcb_connect(nullptr, nullptr);
  pa_glib_mainloop* const loop = pa_glib_mainloop_new(nullptr);
  pa_context* const context = pa_context_new(pa_glib_mainloop_get_api(loop), "bare");
  pa_context_set_state_callback(context, onState, nullptr);
  pa_context_connect(context, nullptr, PA_CONTEXT_NOFLAGS, nullptr);

  call(session, "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
       "org.kde.StatusNotifierWatcher", "RegisterStatusNotifierItem",
       g_variant_new("(s)", g_dbus_connection_get_unique_name(session)));
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
