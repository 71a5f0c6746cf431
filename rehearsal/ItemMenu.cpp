#include "rehearsal/ItemMenu.h"

#include <algorithm>
#include <future>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

/// In a label "__" stands for one underscore, and a single "_" marks the mnemonic.
std::string withoutMnemonics(const std::string& label) {
  std::string text;
  for (std::size_t i = 0; i < label.size(); ++i) {
    if (label[i] == '_' && ++i == label.size()) break;
    text += label[i];
  }
  return text;
}

ItemMenu::Row rowOf(GVariant* item) {
  ItemMenu::Row row;
  g_variant_get_child(item, 0, "i", &row.id);
  const Variant properties(g_variant_get_child_value(item, 1));
  const char* text = nullptr;
  if (g_variant_lookup(properties.get(), "label", "&s", &text)) row.text = withoutMnemonics(text);
  if (g_variant_lookup(properties.get(), "type", "&s", &text)) {
    row.separator = std::string(text) == "separator";
  }
  gboolean enabled = TRUE;
  g_variant_lookup(properties.get(), "enabled", "b", &enabled);
  row.enabled = enabled;
  row.isSwitch = g_variant_lookup(properties.get(), "toggle-type", "&s", &text);
  int state = 0;
  g_variant_lookup(properties.get(), "toggle-state", "i", &state);
  row.on = state == 1;
  return row;
}

}  // namespace

std::vector<ItemMenu::Row> ItemMenu::rows() const {
  const Variant reply =
      call("GetLayout", g_variant_new("(ii@as)", 0, -1, g_variant_new_strv(nullptr, 0)));
  GVariantIter* children = nullptr;
  g_variant_get(reply.get(), "(u(ia{sv}av))", nullptr, nullptr, nullptr, &children);
  std::vector<Row> rows;
  for (GVariant* child = nullptr; g_variant_iter_next(children, "v", &child);) {
    rows.push_back(rowOf(Variant(child).get()));
  }
  g_variant_iter_free(children);
  return rows;
}

ItemMenu::Row ItemMenu::row(const std::string& text) const {
  const std::vector<Row> all = rows();
  const auto wanted = std::ranges::find(all, text, &Row::text);
  if (wanted == all.end()) throw DeskError("the menu has no row \"" + text + "\"");
  return *wanted;
}

void ItemMenu::choose(const std::string& text) const {
  call("Event",
       g_variant_new("(isvu)", row(text).id, "clicked", g_variant_new_string(""), guint32{0}));
}

Variant ItemMenu::call(const char* method, GVariant* arguments) const {
  auto reply = std::async(std::launch::async, [&] {
    return bus_.call(item_, "/MenuBar", "com.canonical.dbusmenu", method, arguments);
  });
  waitUntil([&] { return reply.wait_for(Milliseconds{0}) == std::future_status::ready; },
            serverTimeout, "the item's menu");
  return reply.get();
}

}  // namespace hushbox::rehearsal
