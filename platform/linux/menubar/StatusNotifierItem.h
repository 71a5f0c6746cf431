#pragma once

#include <gio/gio.h>

#include <functional>
#include <optional>
#include <string>

#include "platform/Image.h"
#include "platform/linux/bus/ExportedObject.h"
#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/menubar/IconPixmap.h"
#include "platform/linux/menubar/PanelTone.h"
#include "support/Lifetime.h"

namespace hushbox {

/// The item as panels read it, over `org.kde.StatusNotifierItem`: an icon in several sizes, a tool
/// tip and an accessible description that say the state in words, and the path of its menu. Main
/// thread only.
///
/// Panels are found through the watcher, `org.kde.StatusNotifierWatcher`; the item registers with
/// each one that appears, be it for the first time or again, from its first icon on.
///
/// The item is nothing but its menu (`ItemIsMenu`), so it has no Activate and no ContextMenu:
/// panels that call them all the same get the refusal upon which they open the menu.
class StatusNotifierItem {
 public:
  static constexpr const char* path = "/StatusNotifierItem";

  /// `refused` is called with the reason when a watcher does not take the item.
  explicit StatusNotifierItem(std::function<void(const std::string& reason)> refused);
  ~StatusNotifierItem();
  StatusNotifierItem(const StatusNotifierItem&) = delete;
  StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;

  /// Offers the item on a bus, in place of the one before, if any.
  void exportOn(GDBusConnection* connection);
  void withdraw();

  /// Whether a watcher knows of it at present.
  bool isRegistered() const { return registered_; }

  /// Tells the panel when the pixels or the words are other than before, and of nothing else.
  void setIcon(const Image& icon, const std::string& description);

  /// Recolours a template; see IconPixmap. Until it is called, nothing is known of the panel.
  void setPanelTone(PanelTone tone);

 private:
  static const GDBusInterfaceVTable vtable;

  GVariant* property(const std::string& name) const;
  GVariant* pixmaps() const;
  GVariant* toolTip() const;
  void watchForWatcher();
  void registerWith(const char* watcher);
  void noteAnswer(const std::string& watcher, const GError* error);

  const std::function<void(const std::string&)> refused_;
  NodeInfoPointer node_;
  std::optional<ExportedObject> object_;
  guint watch_ = 0;
  /// The present owner of the watcher's name; empty while there is none.
  std::string watcher_;
  bool registered_ = false;
  std::optional<Image> icon_;
  /// What the icon looks like, for telling whether another one looks the same.
  IconPixmap likeness_;
  std::string description_;
  PanelTone tone_ = PanelTone::unknown;
  Lifetime lifetime_;
};

}  // namespace hushbox
