#include "platform/linux/menubar/DBusMenu.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "platform/linux/bus/AsyncCallback.h"
#include "platform/linux/menubar/DBusMenuIntrospection.h"
#include "platform/linux/menubar/MenuItemProperties.h"

namespace hushbox {
namespace {

std::vector<std::string> strings(GVariant* array) {
  std::vector<std::string> all;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, array);
  const char* text = nullptr;
  while (g_variant_iter_next(&iterator, "&s", &text)) all.emplace_back(text);
  return all;
}

std::vector<std::int32_t> integers(GVariant* array) {
  std::vector<std::int32_t> all;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, array);
  std::int32_t number = 0;
  while (g_variant_iter_next(&iterator, "i", &number)) all.push_back(number);
  return all;
}

GVariant* toArray(const std::vector<std::int32_t>& numbers) {
  return g_variant_new_fixed_array(G_VARIANT_TYPE_INT32, numbers.data(), numbers.size(),
                                   sizeof(std::int32_t));
}

/// Takes over a floating value.
DBusMenu::Reply success(GVariant* value) {
  return {.value = VariantPointer(g_variant_ref_sink(value))};
}

DBusMenu::Reply noSuchItem(std::int32_t id) {
  return {.error = "The menu has no item " + std::to_string(id)};
}

GVariant* interfaceProperty(std::string_view name) {
  if (name == "Version") return g_variant_new_uint32(3);
  if (name == "TextDirection") return g_variant_new_string("ltr");
  if (name == "Status") return g_variant_new_string("normal");
  return g_variant_new_strv(nullptr, 0);
}

}  // namespace

/// Collects the arguments of ItemsPropertiesUpdated.
class DBusMenu::PropertyChanges {
 public:
  PropertyChanges() {
    g_variant_builder_init(&updated_, G_VARIANT_TYPE("a(ia{sv})"));
    g_variant_builder_init(&removed_, G_VARIANT_TYPE("a(ias)"));
  }

  void add(std::int32_t id, const MenuItemProperties& updated,
           const std::vector<const char*>& removed) {
    empty_ = empty_ && updated.empty() && removed.empty();
    if (!updated.empty()) g_variant_builder_add(&updated_, "(i@a{sv})", id, updated.dictionary());
    if (removed.empty()) return;
    GVariant* names = g_variant_new_strv(removed.data(), static_cast<gssize>(removed.size()));
    g_variant_builder_add(&removed_, "(i@as)", id, names);
  }

  bool empty() const { return empty_; }
  /// Returns a floating tuple; call it once.
  GVariant* end() { return g_variant_new("(a(ia{sv})a(ias))", &updated_, &removed_); }

 private:
  GVariantBuilder updated_, removed_;
  bool empty_ = true;
};

const GDBusInterfaceVTable DBusMenu::vtable{
    [](GDBusConnection*, const char*, const char*, const char*, const char* method,
       GVariant* arguments, GDBusMethodInvocation* invocation,
       gpointer self) { static_cast<DBusMenu*>(self)->call(method, arguments, invocation); },
    [](GDBusConnection*, const char*, const char*, const char*, const char* name, GError**,
       gpointer) { return interfaceProperty(name); },
    nullptr,
    {}};

DBusMenu::DBusMenu() : node_(g_dbus_node_info_new_for_xml(dbusMenuIntrospection, nullptr)) {}

void DBusMenu::exportOn(GDBusConnection* connection) {
  object_.reset();
  object_.emplace(connection, path, node_->interfaces[0], vtable, this);
}

std::optional<MenuItemProperties> DBusMenu::propertiesOf(std::int32_t id) const {
  if (id == 0) return MenuItemProperties::ofRoot();
  const MenuItem* item = items_.find(id);
  if (!item) return std::nullopt;
  return MenuItemProperties::of(item->row);
}

void DBusMenu::setRows(std::vector<MenuRow> rows) {
  const std::vector<MenuItem> before = items_.replace(std::move(rows));
  announceChangesSince(before);
  if (std::ranges::equal(before, items_.all(), {}, &MenuItem::id, &MenuItem::id)) return;
  ++revision_;
  if (object_) object_->emit("LayoutUpdated", g_variant_new("(ui)", revision_, 0));
}

void DBusMenu::announceChangesSince(const std::vector<MenuItem>& before) {
  PropertyChanges changes;
  for (const MenuItem& old : before) {
    const MenuItem* item = items_.find(old.id);
    if (!item) continue;
    const auto was = MenuItemProperties::of(old.row), now = MenuItemProperties::of(item->row);
    changes.add(old.id, now.changesSince(was), now.missingFrom(was));
  }
  announce(changes);
}

void DBusMenu::announce(PropertyChanges& changes) {
  const VariantPointer arguments(g_variant_ref_sink(changes.end()));
  if (object_ && !changes.empty()) object_->emit("ItemsPropertiesUpdated", arguments.get());
}

void DBusMenu::call(const std::string& method, GVariant* arguments,
                    GDBusMethodInvocation* invocation) {
  Reply reply = replyTo(method, arguments);
  if (!reply.error.empty()) {
    return g_dbus_method_invocation_return_error_literal(
        invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS, reply.error.c_str());
  }
  g_dbus_method_invocation_return_value(invocation, reply.value.get());
  if (!reply.clicked.empty()) chooseWhenAnswered(std::move(reply.clicked));
}

DBusMenu::Reply DBusMenu::replyTo(const std::string& method, GVariant* arguments) const {
  using Handler = Reply (DBusMenu::*)(GVariant*) const;
  static const std::map<std::string, Handler> handlers{
      {"GetLayout", &DBusMenu::getLayout},
      {"GetGroupProperties", &DBusMenu::getGroupProperties},
      {"GetProperty", &DBusMenu::getProperty},
      {"Event", &DBusMenu::event},
      {"EventGroup", &DBusMenu::eventGroup},
      {"AboutToShow", &DBusMenu::aboutToShow},
      {"AboutToShowGroup", &DBusMenu::aboutToShowGroup}};
  return (this->*handlers.at(method))(arguments);
}

DBusMenu::Reply DBusMenu::getLayout(GVariant* arguments) const {
  std::int32_t parent = 0, depth = 0;
  GVariant* names = nullptr;
  g_variant_get(arguments, "(ii@as)", &parent, &depth, &names);
  const std::vector<std::string> wanted = strings(VariantPointer(names).get());
  const auto properties = propertiesOf(parent);
  if (!properties) return noSuchItem(parent);
  GVariantBuilder children;
  g_variant_builder_init(&children, G_VARIANT_TYPE("av"));
  // A negative depth requests all levels.
  if (parent == 0 && depth != 0) {
    for (const MenuItem& item : items_.all()) {
      g_variant_builder_add(
          &children, "v",
          g_variant_new("(i@a{sv}av)", item.id, MenuItemProperties::of(item.row).dictionary(wanted),
                        nullptr));
    }
  }
  return success(g_variant_new("(u(i@a{sv}av))", revision_, parent, properties->dictionary(wanted),
                               &children));
}

DBusMenu::Reply DBusMenu::getGroupProperties(GVariant* arguments) const {
  GVariant *idArray = nullptr, *names = nullptr;
  g_variant_get(arguments, "(@ai@as)", &idArray, &names);
  std::vector<std::int32_t> ids = integers(VariantPointer(idArray).get());
  const std::vector<std::string> wanted = strings(VariantPointer(names).get());
  if (ids.empty()) {
    ids.push_back(0);
    for (const MenuItem& item : items_.all()) ids.push_back(item.id);
  }
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ia{sv})"));
  for (const std::int32_t id : ids) {
    if (const auto properties = propertiesOf(id))
      g_variant_builder_add(&builder, "(i@a{sv})", id, properties->dictionary(wanted));
  }
  return success(g_variant_new("(a(ia{sv}))", &builder));
}

DBusMenu::Reply DBusMenu::getProperty(GVariant* arguments) const {
  std::int32_t id = 0;
  const char* name = nullptr;
  g_variant_get(arguments, "(i&s)", &id, &name);
  const auto properties = propertiesOf(id);
  if (!properties) return noSuchItem(id);
  GVariant* value = properties->find(name);
  if (value) return success(g_variant_new("(v)", value));
  return {.error = "Item " + std::to_string(id) + " has no property \"" + name + '"'};
}

DBusMenu::Reply DBusMenu::event(GVariant* arguments) const {
  std::int32_t id = 0;
  const char* event = nullptr;
  g_variant_get(arguments, "(i&svu)", &id, &event, nullptr, nullptr);
  if (!has(id)) return noSuchItem(id);
  Reply reply;
  if (std::string_view(event) == "clicked") reply.clicked.push_back(id);
  return reply;
}

DBusMenu::Reply DBusMenu::eventGroup(GVariant* arguments) const {
  const VariantPointer events(g_variant_get_child_value(arguments, 0));
  std::vector<std::int32_t> clicked, unknown;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, events.get());
  std::int32_t id = 0;
  const char* event = nullptr;
  while (g_variant_iter_next(&iterator, "(i&svu)", &id, &event, nullptr, nullptr)) {
    if (!has(id)) {
      unknown.push_back(id);
    } else if (std::string_view(event) == "clicked") {
      clicked.push_back(id);
    }
  }
  // By the protocol, an error only when no event at all has an item.
  if (!unknown.empty() && unknown.size() == g_variant_n_children(events.get()))
    return noSuchItem(unknown.front());
  Reply reply = success(g_variant_new("(@ai)", toArray(unknown)));
  reply.clicked = std::move(clicked);
  return reply;
}

DBusMenu::Reply DBusMenu::aboutToShow(GVariant* arguments) const {
  std::int32_t id = 0;
  g_variant_get(arguments, "(i)", &id);
  if (!has(id)) return noSuchItem(id);
  return success(g_variant_new("(b)", FALSE));
}

DBusMenu::Reply DBusMenu::aboutToShowGroup(GVariant* arguments) const {
  const VariantPointer array(g_variant_get_child_value(arguments, 0));
  std::vector<std::int32_t> unknown = integers(array.get());
  std::erase_if(unknown, [this](std::int32_t id) { return has(id); });
  return success(g_variant_new("(@ai@ai)", toArray({}), toArray(unknown)));
}

void DBusMenu::chooseWhenAnswered(std::vector<std::int32_t> ids) {
  g_dbus_connection_flush(
      object_->connection(), nullptr, AsyncCallback::invoke,
      AsyncCallback::data([choose = lifetime_.weakly([this](std::int32_t id) { this->choose(id); }),
                           ids = std::move(ids)](GObject*, GAsyncResult*) {
        for (const std::int32_t id : ids) choose(id);
      }));
}

void DBusMenu::choose(std::int32_t id) {
  const MenuItem* item = items_.find(id);
  if (!item || !item->row.enabled || !item->row.action) return;
  // The action may change the rows or destroy this menu.
  const auto action = item->row.action;
  const auto announce = lifetime_.weakly([this, id] { announceMark(id); });
  action();
  announce();
}

void DBusMenu::announceMark(std::int32_t id) {
  // A panel sets the mark itself on a click. If the toggle did not change, only this takes it back.
  const MenuItem* item = items_.find(id);
  if (!item || item->row.kind != MenuRow::Kind::toggle) return;
  PropertyChanges changes;
  changes.add(id, MenuItemProperties::of(item->row), {});
  announce(changes);
}

}  // namespace hushbox
