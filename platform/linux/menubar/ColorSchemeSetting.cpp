#include "platform/linux/menubar/ColorSchemeSetting.h"

#include <string_view>
#include <utility>

namespace hushbox {
namespace {

constexpr const char* portal = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* settings = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* colorScheme = "color-scheme";
constexpr std::chrono::milliseconds timeout{5000};

}  // namespace

ColorSchemeSetting::ColorSchemeSetting(SessionBusConnection& bus, GDBusConnection* connection,
                                       std::function<void(ColorScheme)> changed)
    : bus_(bus),
      connection_(g_object_ref(connection)),
      changed_(std::move(changed)),
      subscription_(g_dbus_connection_signal_subscribe(
          connection, portal, settings, "SettingChanged", portalPath, appearance,
          G_DBUS_SIGNAL_FLAGS_NONE, settingChanged, this, nullptr)),
      watch_(g_bus_watch_name_on_connection(connection, portal, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                            portalAppeared, nullptr, this, nullptr)) {}

ColorSchemeSetting::~ColorSchemeSetting() {
  g_bus_unwatch_name(watch_);
  g_dbus_connection_signal_unsubscribe(connection_.get(), subscription_);
}

void ColorSchemeSetting::portalAppeared(GDBusConnection*, const char*, const char*, gpointer self) {
  static_cast<ColorSchemeSetting*>(self)->read();
}

void ColorSchemeSetting::settingChanged(GDBusConnection*, const char*, const char*, const char*,
                                        const char*, GVariant* arguments, gpointer self) {
  if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ssv)"))) return;
  const char* key = nullptr;
  GVariant* value = nullptr;
  g_variant_get(arguments, "(&s&sv)", nullptr, &key, &value);
  const VariantPointer owned(value);
  if (std::string_view(key) == colorScheme) static_cast<ColorSchemeSetting*>(self)->note(value);
}

void ColorSchemeSetting::read() {
  // "Read" exists in every version of the portal; the newer "ReadOne" only unwraps the value.
  bus_.call({{portal, portalPath},
             settings,
             "Read",
             "(v)",
             timeout,
             takeArguments(g_variant_new("(ss)", appearance, colorScheme))},
            lifetime_.weakly([this](const BusReply& reply) {
              if (!reply) return;
              const VariantPointer value(g_variant_get_child_value(reply.value.get(), 0));
              note(value.get());
            }));
}

void ColorSchemeSetting::note(GVariant* value) {
  VariantPointer inner(g_variant_ref(value));
  while (g_variant_is_of_type(inner.get(), G_VARIANT_TYPE_VARIANT))
    inner.reset(g_variant_get_variant(inner.get()));
  if (!g_variant_is_of_type(inner.get(), G_VARIANT_TYPE_UINT32)) return;
  const guint32 figure = g_variant_get_uint32(inner.get());
  // Unknown values count as no preference, as the portal's documentation says.
  changed_(figure <= 2 ? static_cast<ColorScheme>(figure) : ColorScheme::noPreference);
}

}  // namespace hushbox
