#include "tests/linux/PanelTest.h"

#include <cstdlib>

namespace hushbox {
namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherInterface =
    "<node><interface name='org.kde.StatusNotifierWatcher'>"
    "<method name='RegisterStatusNotifierItem'><arg type='s' direction='in'/></method>"
    "</interface></node>";

}  // namespace

Watcher::Watcher(const std::string& busAddress, bool refusing)
    : bus_(busAddress), refusing_(refusing) {
  static const GDBusInterfaceVTable vtable{
      [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* arguments,
         GDBusMethodInvocation* invocation, gpointer self) {
        auto& watcher = *static_cast<Watcher*>(self);
        if (watcher.refusing_) {
          return g_dbus_method_invocation_return_dbus_error(invocation, "test.Refused", "full up");
        }
        const char* service = nullptr;
        g_variant_get(arguments, "(&s)", &service);
        watcher.items_.emplace_back(service);
        g_dbus_method_invocation_return_value(invocation, nullptr);
      },
      nullptr,
      nullptr,
      {}};
  GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(watcherInterface, nullptr);
  object_ = g_dbus_connection_register_object(bus_.get(), "/StatusNotifierWatcher",
                                              node->interfaces[0], &vtable, this, nullptr, nullptr);
  g_dbus_node_info_unref(node);
  bus_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
            g_variant_new("(su)", watcherName, 0));
}

Watcher::~Watcher() {
  g_dbus_connection_unregister_object(bus_.get(), object_);
}

void Watcher::waitForItem() const {
  rehearsal::waitUntil([this] { return !items_.empty(); }, rehearsal::patience,
                       "an item to register");
}

PanelTest::PanelTest() {
  session_.applyToThisProcess();
  unsetenv("XDG_CURRENT_DESKTOP");
  client_ = std::make_unique<BusClient>(session_.busAddress());
}

PanelTest::~PanelTest() {
  menuBar_.reset();
}

void PanelTest::start() {
  watcher_ = std::make_unique<Watcher>(session_.busAddress());
  menuBar_ = std::make_unique<StatusNotifierMenuBar>(log_);
  menuBar_->setIcon(icon(), "Not on a call");
  watcher_->waitForItem();
  name_ = watcher_->items().front();
  client_->listenTo(name_);
}

BusClient::Answer PanelTest::ofItem(const std::string& property) {
  return client_->property(name_, "/StatusNotifierItem", item, property);
}

BusClient::Answer PanelTest::ofMenu(const std::string& method, GVariant* arguments) {
  return client_->call(name_, "/MenuBar", menu, method, arguments);
}

std::vector<int> PanelTest::rowIds() {
  const auto answer = ofMenu("GetLayout", g_variant_new_parsed("(0, -1, @as [])"));
  GVariantIter* children = nullptr;
  g_variant_get(answer.value.get(), "(u(ia{sv}av))", nullptr, nullptr, nullptr, &children);
  std::vector<int> ids;
  for (GVariant* child = nullptr; g_variant_iter_next(children, "v", &child);) {
    ids.emplace_back();
    g_variant_get_child(child, 0, "i", &ids.back());
    g_variant_unref(child);
  }
  g_variant_iter_free(children);
  return ids;
}

BusClient::Answer PanelTest::click(int id) {
  return ofMenu("Event", g_variant_new_parsed("(%i, 'clicked', <''>, @u 0)", id));
}

}  // namespace hushbox
