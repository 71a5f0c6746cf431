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

  struct Reply {
    /// The tuple of results; null for a method without results and for an error.
    VariantPointer value = {};
    /// Empty unless the call is refused.
    std::string error = {};
    /// The items that the panel's user has clicked, in order. Each of them is in the menu.
    std::vector<std::int32_t> clicked = {};
  };

  /// Returns the reply to a method call; changes nothing and runs no action. The interface must
  /// have the method, and the arguments must have its types: GDBus refuses all other calls.
  Reply replyTo(const std::string& method, GVariant* arguments) const;

 private:
  class PropertyChanges;

  static const GDBusInterfaceVTable vtable;

  void call(const std::string& method, GVariant* arguments, GDBusMethodInvocation* invocation);
  Reply getLayout(GVariant* arguments) const;
  Reply getGroupProperties(GVariant* arguments) const;
  Reply getProperty(GVariant* arguments) const;
  Reply event(GVariant* arguments) const;
  Reply eventGroup(GVariant* arguments) const;
  Reply aboutToShow(GVariant* arguments) const;
  Reply aboutToShowGroup(GVariant* arguments) const;

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
