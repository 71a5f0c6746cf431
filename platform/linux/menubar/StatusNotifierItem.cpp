#include "platform/linux/menubar/StatusNotifierItem.h"

#include <string_view>
#include <utility>

#include "platform/linux/bus/AsyncCallback.h"
#include "platform/linux/menubar/DBusMenu.h"
#include "platform/linux/menubar/PanelText.h"

namespace hushbox {
namespace {

constexpr const char* introspection = R"xml(<node><interface name="org.kde.StatusNotifierItem">
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="IconAccessibleDesc" type="s" access="read"/>
  <property name="OverlayIconName" type="s" access="read"/>
  <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionIconName" type="s" access="read"/>
  <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionMovieName" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <signal name="NewIcon"/>
  <signal name="NewToolTip"/>
</interface></node>)xml";

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* title = "Hushbox";

/// In pixels: what panels commonly have room for, once and at twice the density. The largest serves
/// the panels that scale by themselves.
constexpr int sizes[] = {16, 18, 22, 24, 32, 36, 44, 48, 64};
constexpr int likenessSize = 64;

/// Without regard to the panel's colours, so that an icon is the same on any panel.
Image withoutRecolouring(Image icon) {
  icon.isTemplate = false;
  return icon;
}

GVariant* noPixmaps() {
  return g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0);
}

}  // namespace

const GDBusInterfaceVTable StatusNotifierItem::vtable{
    nullptr,
    [](GDBusConnection*, const char*, const char*, const char*, const char* name, GError**,
       gpointer self) { return static_cast<StatusNotifierItem*>(self)->property(name); },
    nullptr,
    {}};

StatusNotifierItem::StatusNotifierItem(std::function<void(const std::string&)> refused)
    : refused_(std::move(refused)), node_(g_dbus_node_info_new_for_xml(introspection, nullptr)) {}

StatusNotifierItem::~StatusNotifierItem() {
  withdraw();
}

void StatusNotifierItem::exportOn(GDBusConnection* connection) {
  withdraw();
  object_.emplace(connection, path, node_->interfaces[0], vtable, this);
  if (icon_) watchForWatcher();
}

void StatusNotifierItem::withdraw() {
  if (watch_) g_bus_unwatch_name(std::exchange(watch_, 0));
  watcher_.clear();
  registered_ = false;
  object_.reset();
}

void StatusNotifierItem::setIcon(const Image& icon, const std::string& description) {
  const bool first = !icon_;
  IconPixmap likeness =
      IconPixmap::render(withoutRecolouring(icon), likenessSize, PanelTone::unknown);
  const bool sameIcon = !first && icon_->isTemplate == icon.isTemplate && likeness == likeness_;
  const bool sameDescription = description == description_;
  icon_ = icon;
  likeness_ = std::move(likeness);
  description_ = description;
  if (!object_) return;
  if (first) return watchForWatcher();
  if (!sameIcon) object_->emit("NewIcon");
  if (!sameDescription) object_->emit("NewToolTip");
}

void StatusNotifierItem::setPanelTone(PanelTone tone) {
  if (std::exchange(tone_, tone) == tone) return;
  if (object_ && icon_ && icon_->isTemplate) object_->emit("NewIcon");
}

GVariant* StatusNotifierItem::property(const std::string& name) const {
  if (name == "Category") return g_variant_new_string("Hardware");
  if (name == "Id") return g_variant_new_string("hushbox");
  if (name == "Title") return g_variant_new_string(title);
  if (name == "Status") return g_variant_new_string("Active");
  if (name == "WindowId") return g_variant_new_int32(0);
  if (name == "IconPixmap") return pixmaps();
  if (name == "IconAccessibleDesc") return g_variant_new_string(panelText(description_).c_str());
  if (name == "ToolTip") return toolTip();
  if (name == "ItemIsMenu") return g_variant_new_boolean(TRUE);
  if (name == "Menu") return g_variant_new_object_path(DBusMenu::path);
  if (name.ends_with("Pixmap")) return noPixmaps();
  return g_variant_new_string("");
}

GVariant* StatusNotifierItem::pixmaps() const {
  if (!icon_) return noPixmaps();
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(iiay)"));
  for (const int size : sizes) {
    const IconPixmap pixmap = IconPixmap::render(*icon_, size, tone_);
    g_variant_builder_add(&builder, "(ii@ay)", size, size,
                          g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, pixmap.bytes.data(),
                                                    pixmap.bytes.size(), 1));
  }
  return g_variant_builder_end(&builder);
}

GVariant* StatusNotifierItem::toolTip() const {
  // The text of a tool tip is markup, unlike its title.
  char* markup = g_markup_escape_text(panelText(description_).c_str(), -1);
  GVariant* toolTip = g_variant_new("(s@a(iiay)ss)", "", noPixmaps(), title, markup);
  g_free(markup);
  return toolTip;
}

void StatusNotifierItem::watchForWatcher() {
  const auto appeared = [](GDBusConnection*, const char*, const char* owner, gpointer self) {
    static_cast<StatusNotifierItem*>(self)->registerWith(owner);
  };
  const auto vanished = [](GDBusConnection*, const char*, gpointer self) {
    static_cast<StatusNotifierItem*>(self)->watcher_.clear();
    static_cast<StatusNotifierItem*>(self)->registered_ = false;
  };
  watch_ = g_bus_watch_name_on_connection(object_->connection(), watcherName,
                                          G_BUS_NAME_WATCHER_FLAGS_NONE, appeared, vanished, this,
                                          nullptr);
}

void StatusNotifierItem::registerWith(const char* watcher) {
  watcher_ = watcher;
  registered_ = false;
  GDBusConnection* connection = object_->connection();
  g_dbus_connection_call(
      connection, watcher, watcherPath, watcherName, "RegisterStatusNotifierItem",
      g_variant_new("(s)", g_dbus_connection_get_unique_name(connection)), nullptr,
      G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, AsyncCallback::invoke,
      AsyncCallback::data(
          [note = lifetime_.weakly([this, watcher = watcher_](const ErrorPointer& error) {
            noteAnswer(watcher, error.get());
          })](GObject* source, GAsyncResult* result) {
            GError* error = nullptr;
            const VariantPointer answer(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
            note(ErrorPointer(error));
          }));
}

void StatusNotifierItem::noteAnswer(const std::string& watcher, const GError* error) {
  // An answer of one that has gone meanwhile says nothing about the present one.
  if (watcher != watcher_) return;
  registered_ = !error;
  if (error) refused_(error->message);
}

}  // namespace hushbox
