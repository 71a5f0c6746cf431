#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/MenuBar.h"
#include "platform/linux/bus/ExportedObject.h"
#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/menubar/MenuItemProperties.h"
#include "platform/linux/menubar/MenuItems.h"
#include "support/Lifetime.h"

namespace hushbox {

/// The menu on the session bus, as panels read it (`com.canonical.dbusmenu`): one level of rows
/// under the root, which is item 0. Main thread only.
///
/// Unknown item numbers and invalid arguments get a D-Bus error. A row's action runs after the
/// panel has received its reply. A shortcut is Control with the row's letter; panels show shortcuts
/// but do not listen for them.
class DBusMenu {
 public:
  static constexpr const char* path = "/MenuBar";

  DBusMenu();
  DBusMenu(const DBusMenu&) = delete;
  DBusMenu& operator=(const DBusMenu&) = delete;

  /// Exports the menu on a connection, and no longer on the previous one.
  void exportOn(GDBusConnection* connection);
  void withdraw() { object_.reset(); }

  /// Sends the panel a signal only for what has changed: a new layout when rows were added or
  /// removed, else the changed properties.
  void setRows(std::vector<MenuRow> rows);

 private:
  class PropertyChanges;

  static const GDBusInterfaceVTable vtable;

  void call(const std::string& method, GVariant* arguments, GDBusMethodInvocation* invocation);
  void getLayout(GVariant* arguments, GDBusMethodInvocation* invocation);
  void getGroupProperties(GVariant* arguments, GDBusMethodInvocation* invocation);
  void getProperty(GVariant* arguments, GDBusMethodInvocation* invocation);
  void event(GVariant* arguments, GDBusMethodInvocation* invocation);
  void eventGroup(GVariant* arguments, GDBusMethodInvocation* invocation);
  void aboutToShow(GVariant* arguments, GDBusMethodInvocation* invocation);
  void aboutToShowGroup(GVariant* arguments, GDBusMethodInvocation* invocation);

  /// Returns nullopt when there is no such item.
  std::optional<MenuItemProperties> propertiesOf(std::int32_t id) const;
  bool has(std::int32_t id) const { return id == 0 || items_.find(id); }
  void announceChangesSince(const std::vector<MenuItem>& before);
  void announce(PropertyChanges& changes);
  void chooseWhenAnswered(std::vector<std::int32_t> ids);
  void choose(std::int32_t id);
  void announceMark(std::int32_t id);

  NodeInfoPointer node_;
  std::optional<ExportedObject> object_;
  MenuItems items_;
  std::uint32_t revision_ = 1;
  Lifetime lifetime_;
};

}  // namespace hushbox
