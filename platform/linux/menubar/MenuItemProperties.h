#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/MenuBar.h"
#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// The properties of one item of a `com.canonical.dbusmenu` menu. A move-only value.
class MenuItemProperties {
 public:
  /// The properties of the root, the parent of all rows.
  static MenuItemProperties ofRoot();

  /// A text is a disabled item. Underscores in the label are doubled, since a single one would mark
  /// the row's mnemonic. A key equivalent is pressed with Control.
  static MenuItemProperties of(const MenuRow& row);

  /// The properties that are new or different compared to `before`.
  MenuItemProperties changesSince(const MenuItemProperties& before) const;
  /// The names of the properties that `before` had and these have not.
  std::vector<const char*> missingFrom(const MenuItemProperties& before) const;

  bool empty() const { return values_.empty(); }
  /// Returns null when there is no such property.
  GVariant* find(const std::string& name) const;

  /// A floating `a{sv}` of the properties in `names`, or of all properties when `names` is empty.
  GVariant* dictionary(const std::vector<std::string>& names = {}) const;

 private:
  void set(const char* name, GVariant* value);

  std::map<std::string, VariantPointer> values_;
};

}  // namespace hushbox
