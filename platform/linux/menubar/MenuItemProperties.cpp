#include "platform/linux/menubar/MenuItemProperties.h"

#include <algorithm>
#include <array>

#include "platform/linux/menubar/PanelText.h"

namespace hushbox {
namespace {

std::string label(const MenuRow& row) {
  std::string text;
  for (const char c : panelText(row.text)) text.append(c == '_' ? 2 : 1, c);
  return text;
}

/// A shortcut with one key press; the format allows for a sequence of them.
GVariant* controlWith(const std::string& keyEquivalent) {
  const std::string letter = panelText(keyEquivalent);
  const std::array keys{"Control", letter.c_str()};
  GVariant* press = g_variant_new_strv(keys.data(), keys.size());
  return g_variant_new_array(G_VARIANT_TYPE_STRING_ARRAY, &press, 1);
}

}  // namespace

MenuItemProperties MenuItemProperties::ofRoot() {
  MenuItemProperties properties;
  properties.set("children-display", g_variant_new_string("submenu"));
  return properties;
}

MenuItemProperties MenuItemProperties::of(const MenuRow& row) {
  MenuItemProperties properties;
  if (row.kind == MenuRow::Kind::separator) {
    properties.set("type", g_variant_new_string("separator"));
    return properties;
  }
  properties.set("label", g_variant_new_string(label(row).c_str()));
  const bool enabled = row.enabled && row.kind != MenuRow::Kind::text;
  properties.set("enabled", g_variant_new_boolean(enabled));
  if (row.kind == MenuRow::Kind::toggle) {
    properties.set("toggle-type", g_variant_new_string("checkmark"));
    properties.set("toggle-state", g_variant_new_int32(row.on));
  }
  if (!row.keyEquivalent.empty()) properties.set("shortcut", controlWith(row.keyEquivalent));
  return properties;
}

MenuItemProperties MenuItemProperties::changesSince(const MenuItemProperties& before) const {
  MenuItemProperties changes;
  for (const auto& [name, value] : values_) {
    GVariant* previous = before.find(name);
    if (!previous || !g_variant_equal(previous, value.get()))
      changes.set(name.c_str(), value.get());
  }
  return changes;
}

std::vector<const char*> MenuItemProperties::missingFrom(const MenuItemProperties& before) const {
  std::vector<const char*> names;
  for (const auto& [name, value] : before.values_)
    if (!values_.contains(name)) names.push_back(name.c_str());
  return names;
}

GVariant* MenuItemProperties::find(const std::string& name) const {
  const auto property = values_.find(name);
  return property == values_.end() ? nullptr : property->second.get();
}

GVariant* MenuItemProperties::dictionary(const std::vector<std::string>& names) const {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
  for (const auto& [name, value] : values_) {
    if (names.empty() || std::ranges::find(names, name) != names.end())
      g_variant_builder_add(&builder, "{sv}", name.c_str(), value.get());
  }
  return g_variant_builder_end(&builder);
}

void MenuItemProperties::set(const char* name, GVariant* value) {
  values_[name].reset(g_variant_ref_sink(value));
}

}  // namespace hushbox
