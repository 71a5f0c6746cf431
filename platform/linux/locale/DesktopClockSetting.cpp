#include "platform/linux/locale/DesktopClockSetting.h"

#include <cstdlib>
#include <string_view>

#include "platform/linux/bus/AsyncCallback.h"
#include "platform/linux/bus/SessionBusAddress.h"

namespace hushbox {
namespace {

constexpr const char* schemaName = "org.gnome.desktop.interface";
constexpr const char* key = "clock-format";

bool isGnome() {
  const char* desktops = std::getenv("XDG_CURRENT_DESKTOP");
  return desktops && std::string_view(desktops).find("GNOME") != std::string_view::npos;
}

}  // namespace

DesktopClockSetting::DesktopClockSetting() {
  if (sessionBusAddress().empty()) return;
  // The settings' storage listens for changes on the connection that all of GLib shares, which ends
  // the program together with the bus unless it is told not to, and before.
  g_bus_get(G_BUS_TYPE_SESSION, cancellable_.get(), AsyncCallback::invoke,
            AsyncCallback::data([connected = lifetime_.weakly([this](GAsyncResult* result) {
              bus_.reset(g_bus_get_finish(result, nullptr));
              if (!bus_) return;
              g_dbus_connection_set_exit_on_close(bus_.get(), FALSE);
              open(nullptr);
            })](GObject*, GAsyncResult* result) { connected(result); }));
}

DesktopClockSetting::DesktopClockSetting(GSettingsBackend* backend) {
  open(backend);
}

DesktopClockSetting::~DesktopClockSetting() {
  g_cancellable_cancel(cancellable_.get());
}

void DesktopClockSetting::open(GSettingsBackend* backend) {
  // To ask for a schema or a key that is not installed ends the program.
  GSettingsSchemaSource* const source = g_settings_schema_source_get_default();
  if (!source) return;
  GSettingsSchema* const schema = g_settings_schema_source_lookup(source, schemaName, TRUE);
  if (!schema) return;
  if (g_settings_schema_has_key(schema, key))
    settings_.reset(g_settings_new_full(schema, backend, nullptr));
  g_settings_schema_unref(schema);
}

std::optional<ClockStyle> DesktopClockSetting::style() const {
  if (!settings_) return std::nullopt;
  const VariantPointer value(isGnome() ? g_settings_get_value(settings_.get(), key)
                                       : g_settings_get_user_value(settings_.get(), key));
  if (!value || !g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING)) return std::nullopt;
  const std::string_view chosen = g_variant_get_string(value.get(), nullptr);
  if (chosen == "12h") return ClockStyle::twelveHours;
  if (chosen == "24h") return ClockStyle::twentyFourHours;
  return std::nullopt;
}

}  // namespace hushbox
