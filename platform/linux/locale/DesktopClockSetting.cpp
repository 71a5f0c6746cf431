#include "platform/linux/locale/DesktopClockSetting.h"

#include <cstdlib>
#include <string_view>

#include "platform/linux/bus/InstalledSettings.h"

namespace hushbox {
namespace {

constexpr const char* schemaName = "org.gnome.desktop.interface";
constexpr const char* key = "clock-format";

bool isGnome() {
  const char* desktops = std::getenv("XDG_CURRENT_DESKTOP");
  return desktops && std::string_view(desktops).find("GNOME") != std::string_view::npos;
}

}  // namespace

DesktopClockSetting::DesktopClockSetting(SessionBusConnection& bus)
    // The storage of the settings listens for changes on the connection that GLib shares. It must
    // not be the first to use it: until `bus` has changed that, the end of the bus would end the
    // program.
    : busSubscription_(bus.observe(
          [this](GDBusConnection*) {
            if (!settings_) settings_ = openInstalledSettings(schemaName, key, nullptr);
          },
          [](const std::string&) {})) {}

DesktopClockSetting::DesktopClockSetting(GSettingsBackend* backend)
    : settings_(openInstalledSettings(schemaName, key, backend)) {}

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
