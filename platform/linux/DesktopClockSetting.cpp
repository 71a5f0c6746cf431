#include "platform/linux/DesktopClockSetting.h"

#include <cstdlib>
#include <string_view>

namespace hushbox {
namespace {

constexpr const char* schemaName = "org.gnome.desktop.interface";
constexpr const char* key = "clock-format";

bool isGnome() {
  const char* desktops = std::getenv("XDG_CURRENT_DESKTOP");
  return desktops && std::string_view(desktops).find("GNOME") != std::string_view::npos;
}

}  // namespace

DesktopClockSetting::DesktopClockSetting(GSettingsBackend* backend) {
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
  GVariant* const value = isGnome() ? g_settings_get_value(settings_.get(), key)
                                    : g_settings_get_user_value(settings_.get(), key);
  if (!value) return std::nullopt;
  const std::string_view chosen = g_variant_get_string(value, nullptr);
  const auto style = chosen == "12h"   ? std::optional(ClockStyle::twelveHours)
                     : chosen == "24h" ? std::optional(ClockStyle::twentyFourHours)
                                       : std::nullopt;
  g_variant_unref(value);
  return style;
}

}  // namespace hushbox
