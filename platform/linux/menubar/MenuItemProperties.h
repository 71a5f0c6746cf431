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
  /// Those of the item that all rows lie under.
  static MenuItemProperties ofRoot();

  /// A text is an item that is not enabled. The label is the row's text with underscores doubled:
  /// one by itself would mark the letter that chooses the row. A key equivalent goes with Control.
  static MenuItemProperties of(const MenuRow& row);

  /// What it takes to come here from `before`: properties that are new or different.
  MenuItemProperties changesSince(const MenuItemProperties& before) const;
  /// The names of those that `before` had and this has not.
  std::vector<const char*> missingFrom(const MenuItemProperties& before) const;

  bool empty() const { return values_.empty(); }
  /// Null when there is no such property.
  GVariant* find(const std::string& name) const;

  /// `a{sv}` of the properties called `names`, or of all when there are no names; floating.
  GVariant* dictionary(const std::vector<std::string>& names = {}) const;

 private:
  void set(const char* name, GVariant* value);

  std::map<std::string, VariantPointer> values_;
};

}  // namespace hushbox
