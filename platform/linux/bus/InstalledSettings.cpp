#include "platform/linux/bus/InstalledSettings.h"

namespace hushbox {

ObjectPointer<GSettings> openInstalledSettings(const char* schema, const char* key,
                                               GSettingsBackend* backend) {
  GSettingsSchemaSource* const source = g_settings_schema_source_get_default();
  if (!source) return nullptr;
  GSettingsSchema* const installed = g_settings_schema_source_lookup(source, schema, TRUE);
  if (!installed) return nullptr;
  ObjectPointer<GSettings> settings;
  if (g_settings_schema_has_key(installed, key))
    settings.reset(g_settings_new_full(installed, backend, nullptr));
  g_settings_schema_unref(installed);
  return settings;
}

}  // namespace hushbox
