#include "platform/linux/menubar/StatusNotifierItem.h"

#include <system_error>
#include <utility>

#include "platform/linux/menubar/DBusMenu.h"
#include "platform/linux/menubar/PanelText.h"
#include "platform/linux/menubar/RightClick.h"
#include "platform/linux/menubar/StatusNotifierItemIntrospection.h"
#include "platform/linux/menubar/TonedIcon.h"

namespace hushbox {
namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* title = "Hushbox";
/// A panel that is still starting may take its time.
constexpr std::chrono::milliseconds registerTimeout{25'000};

/// In pixels: the icon sizes of common panels, also at twice the density. Panels that scale icons
/// themselves take the largest.
constexpr int sizes[] = {16, 18, 22, 24, 32, 36, 44, 48, 64};

void refuse(GDBusMethodInvocation* invocation) {
  g_dbus_method_invocation_return_error(invocation, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD,
                                        "The item offers only its menu");
}

GVariant* noPixmaps() {
  return g_variant_new_array(G_VARIANT_TYPE("(iiay)"), nullptr, 0);
}

}  // namespace

const GDBusInterfaceVTable StatusNotifierItem::vtable{
    [](GDBusConnection*, const char* sender, const char*, const char*, const char*, GVariant*,
       GDBusMethodInvocation* invocation,
       gpointer self) { static_cast<StatusNotifierItem*>(self)->activate(sender, invocation); },
    [](GDBusConnection*, const char*, const char*, const char*, const char* name, GError**,
       gpointer self) { return static_cast<StatusNotifierItem*>(self)->property(name); },
    nullptr,
    {}};

StatusNotifierItem::StatusNotifierItem(SessionBusConnection& bus,
                                       std::function<void(const std::string&)> refused,
                                       std::filesystem::path iconFolder)
    : bus_(bus),
      refused_(std::move(refused)),
      node_(g_dbus_node_info_new_for_xml(statusNotifierItemIntrospection, nullptr)),
      iconFolder_(std::move(iconFolder)) {}

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
  const bool isFirst = !icon_;
  icon_ = icon;
  const bool hasNewIcon = render();
  const bool hasNewWords = std::exchange(description_, description) != description;
  if (!object_) return;
  if (isFirst) return watchForWatcher();
  if (hasNewIcon) object_->emit("NewIcon");
  if (hasNewWords) object_->emit("NewToolTip");
}

void StatusNotifierItem::setPanelTone(PanelTone tone, bool recolours, bool enlargesPixels) {
  tone_ = tone;
  panelRecolours_ = recolours;
  panelEnlargesPixels_ = enlargesPixels;
  renderAndSignal();
}

void StatusNotifierItem::setNeedsNames(bool needsNames) {
  needsNames_ = needsNames;
  renderAndSignal();
}

void StatusNotifierItem::renderAndSignal() {
  if (icon_ && render() && object_) object_->emit("NewIcon");
}

std::string StatusNotifierItem::chooseName() const {
  const auto toned = TonedIcon::on(tone_);
  const bool isSymbolic = icon_->isTemplate && (!toned || panelRecolours_ || needsNames_);
  const bool isNamed = isSymbolic || needsNames_ || panelEnlargesPixels_;
  if (!isNamed || icon_->name.empty() || iconFolder_.empty()) return {};
  std::string name = icon_->name;
  if (isSymbolic)
    name += "-symbolic";
  else if (icon_->isTemplate)
    name += toned->suffix;
  const auto folder = iconFolder_ / "hicolor" / (isSymbolic ? "symbolic" : "scalable");
  std::error_code error;
  // An uninstalled program may still run.
  return std::filesystem::exists(folder / "apps" / (name + ".svg"), error) ? name : std::string();
}

bool StatusNotifierItem::render() {
  std::vector<IconPixmap> pixmaps;
  for (const int size : sizes) pixmaps.push_back(IconPixmap::render(*icon_, size, tone_));
  const std::string name = chooseName();
  const bool hasChanged = pixmaps != pixmaps_ || name != iconName_;
  pixmaps_ = std::move(pixmaps);
  iconName_ = name;
  return hasChanged;
}

GVariant* StatusNotifierItem::property(const std::string& name) const {
  if (name == "Category") return g_variant_new_string("Hardware");
  if (name == "Id") return g_variant_new_string("hushbox");
  if (name == "Title") return g_variant_new_string(title);
  if (name == "Status") return g_variant_new_string("Active");
  if (name == "WindowId") return g_variant_new_int32(0);
  if (name == "IconName") return g_variant_new_string(iconName_.c_str());
  if (name == "IconThemePath") return g_variant_new_string(iconFolder_.c_str());
  if (name == "IconPixmap") return pixmaps();
  if (name == "IconAccessibleDesc") return g_variant_new_string(panelText(description_).c_str());
  if (name == "ToolTip") return toolTip();
  if (name == "ItemIsMenu") return g_variant_new_boolean(TRUE);
  if (name == "Menu") return g_variant_new_object_path(DBusMenu::path);
  if (name.ends_with("Pixmap")) return noPixmaps();
  return g_variant_new_string("");
}

GVariant* StatusNotifierItem::pixmaps() const {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(iiay)"));
  for (const IconPixmap& pixmap : pixmaps_) {
    g_variant_builder_add(&builder, "(ii@ay)", pixmap.size, pixmap.size,
                          g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, pixmap.bytes.data(),
                                                    pixmap.bytes.size(), 1));
  }
  return g_variant_builder_end(&builder);
}

GVariant* StatusNotifierItem::toolTip() const {
  // In the title, which is the first line, and on some panels the only one.
  return g_variant_new("(s@a(iiay)ss)", "", noPixmaps(), panelText(description_).c_str(), "");
}

void StatusNotifierItem::activate(const std::string& caller,
                                  GDBusMethodInvocation* invocation) const {
  if (caller != watcher_) return refuse(invocation);
  clickRightButton([invocation](bool clicked) {
    if (!clicked) return refuse(invocation);
    g_dbus_method_invocation_return_value(invocation, nullptr);
  });
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
  const char* const name = g_dbus_connection_get_unique_name(object_->connection());
  bus_.call({{watcher_, watcherPath},
             watcherName,
             "RegisterStatusNotifierItem",
             "r",
             registerTimeout,
             takeArguments(g_variant_new("(s)", name))},
            lifetime_.weakly(
                [this, watcher = watcher_](const BusReply& reply) { noteReply(watcher, reply); }));
}

void StatusNotifierItem::noteReply(const std::string& watcher, const BusReply& reply) {
  // The reply of a watcher that has exited since says nothing about the present one.
  if (watcher != watcher_) return;
  registered_ = static_cast<bool>(reply);
  if (!reply) refused_(reply.error);
}

}  // namespace hushbox
