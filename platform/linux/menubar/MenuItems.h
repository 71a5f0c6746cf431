#pragma once

#include <cstdint>
#include <vector>

#include "platform/MenuBar.h"

namespace hushbox {

/// One row under the number that the panel knows it by.
struct MenuItem {
  std::int32_t id = 0;
  MenuRow row;
};

/// The rows of a menu, numbered from 1, so that the panel can speak of them while they change.
///
/// A row that stays keeps its number: a button or a switch by its kind and text, a text or a
/// separator by its kind, all in their order. A number never passes to another button or switch,
/// nor is it given again after its row has gone: a click that was on its way when the menu changed
/// reaches the row that was clicked, or none.
class MenuItems {
 public:
  /// Shows `rows` from now on; gives what was shown before.
  std::vector<MenuItem> replace(std::vector<MenuRow> rows);

  const std::vector<MenuItem>& all() const { return items_; }

  /// Null when no row has that number.
  const MenuItem* find(std::int32_t id) const;

 private:
  std::vector<MenuItem> items_;
  std::int32_t lastId_ = 0;
};

}  // namespace hushbox
