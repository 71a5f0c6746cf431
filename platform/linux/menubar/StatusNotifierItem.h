#pragma once

#include <gio/gio.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Image.h"
#include "platform/linux/bus/ExportedObject.h"
#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "platform/linux/menubar/IconPixmap.h"
#include "platform/linux/menubar/PanelTone.h"
#include "support/Lifetime.h"

namespace hushbox {

/// The item on the session bus, as panels read it (`org.kde.StatusNotifierItem`): an icon in
/// several sizes, the state in words as tool tip and accessible description, and the path of its
/// menu. Main thread only.
///
/// A template icon is shown by name (`IconName`) if a symbolic icon of that name is installed:
/// most panels recolour symbolic icons like those beside them. Pixels are sent as well, for panels
/// that don't find the name. Only pixels are sent for icons with a colour of their own, and where
/// the panel's tone is known but not that it recolours icons. To a panel that needs names, every
/// icon is sent by name if it is installed; also to one that enlarges pixels, where a template has
/// an icon in the tone for the panel (see TonedIcon).
///
/// Once it has an icon, the item registers with the watcher (`org.kde.StatusNotifierWatcher`), and
/// again each time that a watcher appears.
///
/// The item offers only its menu (`ItemIsMenu`), so most panels open the menu on a left click, some
/// of them after Activate has returned an error. LXQt's panel calls Activate on a left click and
/// ignores the error; it opens the menu on a right click only. So Activate makes that right click
/// when the panel's own process calls it and the display allows it, and else returns an error.
class StatusNotifierItem {
 public:
  static constexpr const char* path = "/StatusNotifierItem";

  /// Calls `refused` with the reason when a watcher refuses the item. `bus` must outlive this.
  /// `iconFolder` is the folder of icon themes whose hicolor theme has the icons; if it is empty,
  /// only pixels are sent.
  StatusNotifierItem(SessionBusConnection& bus,
                     std::function<void(const std::string& reason)> refused,
                     std::filesystem::path iconFolder);
  ~StatusNotifierItem();
  StatusNotifierItem(const StatusNotifierItem&) = delete;
  StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;

  /// Exports the item on a connection, and no longer on the previous one.
  void exportOn(GDBusConnection* connection);
  /// Ends the export. A panel goes on showing the item until the connection is closed.
  void withdraw();

  /// Whether the present watcher has accepted the item.
  bool isRegistered() const { return registered_; }

  /// Sends the panel a signal only for what has changed: the icon, the words, or both.
  void setIcon(const Image& icon, const std::string& description);

  /// Recolours a template icon; see IconPixmap. `recolours` says whether the panel recolours
  /// symbolic icons by itself, and `enlargesPixels` whether it draws only named icons sharply at
  /// each scale. The tone is unknown until this is called.
  void setPanelTone(PanelTone tone, bool recolours, bool enlargesPixels);

  /// Whether the panel shows icons by name only; false until this is called.
  void setNeedsNames(bool needsNames);

 private:
  static const GDBusInterfaceVTable vtable;

  GVariant* property(const std::string& name) const;
  GVariant* pixmaps() const;
  GVariant* toolTip() const;
  /// The name of the icon to show; empty for none.
  std::string chooseName() const;
  /// Chooses the name and renders the icon in all sizes; returns whether anything has changed.
  bool render();
  void renderAndSignal();
  /// Takes over the invocation.
  void activate(const std::string& caller, GDBusMethodInvocation* invocation) const;
  void watchForWatcher();
  void registerWith(const char* watcher);
  void noteReply(const std::string& watcher, const BusReply& reply);

  SessionBusConnection& bus_;
  const std::function<void(const std::string&)> refused_;
  NodeInfoPointer node_;
  std::optional<ExportedObject> object_;
  guint watch_ = 0;
  /// The unique name of the present watcher; empty for none.
  std::string watcher_;
  bool registered_ = false;
  const std::filesystem::path iconFolder_;
  std::optional<Image> icon_;
  std::string iconName_;
  std::vector<IconPixmap> pixmaps_;
  std::string description_;
  PanelTone tone_ = PanelTone::unknown;
  bool panelRecolours_ = false;
  bool panelEnlargesPixels_ = false;
  bool needsNames_ = false;
  Lifetime lifetime_;
};

}  // namespace hushbox
