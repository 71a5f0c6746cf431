#pragma once

#include <cstdint>
#include <vector>

#include "platform/MenuBar.h"

namespace hushbox {

/// One row with the number by which the panel refers to it.
struct MenuItem {
  std::int32_t id = 0;
  MenuRow row;
};

/// The rows of a menu, numbered from 1, so that the panel can refer to them while they change.
///
/// A row that continues another keeps its number (see continuedRows()). Other numbers are never
/// used again: a click on its way while the menu changes reaches the row that was clicked, or none.
class MenuItems {
 public:
  /// Replaces all rows; returns the previous ones.
  std::vector<MenuItem> replace(std::vector<MenuRow> rows);

  const std::vector<MenuItem>& all() const { return items_; }

  /// Returns null when no row has that number.
  const MenuItem* find(std::int32_t id) const;

 private:
  std::vector<MenuItem> items_;
  std::int32_t lastId_ = 0;
};

}  // namespace hushbox
