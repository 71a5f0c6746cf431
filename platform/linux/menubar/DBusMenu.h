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

/// The menu as panels read it, over `com.canonical.dbusmenu`: one level of rows under the root,
/// which is item 0. Main thread only.
///
/// A number that nobody has, or an argument that makes no sense, gets a D-Bus error. What a row
/// does is done after the panel has its answer. A shortcut is told as Control with the row's
/// letter; panels show it and do not listen for it.
class DBusMenu {
 public:
  static constexpr const char* path = "/MenuBar";

  DBusMenu();
  DBusMenu(const DBusMenu&) = delete;
  DBusMenu& operator=(const DBusMenu&) = delete;

  /// Offers the menu on a bus, in place of the one before, if any.
  void exportOn(GDBusConnection* connection);
  void withdraw() { object_.reset(); }

  /// Tells the panel what is different: that the layout has changed only when rows came or went,
  /// otherwise the properties that changed; nothing when nothing did.
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

  /// Empty when there is no such item.
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
