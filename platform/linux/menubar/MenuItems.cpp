#include "platform/linux/menubar/MenuItems.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace hushbox {

std::vector<MenuItem> MenuItems::replace(std::vector<MenuRow> rows) {
  std::vector<MenuRow> shown;
  for (const MenuItem& item : items_) shown.push_back(item.row);
  const auto continued = continuedRows(shown, rows);
  std::vector<MenuItem> items;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::int32_t id = continued[i] ? items_[*continued[i]].id : ++lastId_;
    items.push_back({id, std::move(rows[i])});
  }
  return std::exchange(items_, std::move(items));
}

const MenuItem* MenuItems::find(std::int32_t id) const {
  const auto item = std::ranges::find(items_, id, &MenuItem::id);
  return item == items_.end() ? nullptr : &*item;
}

}  // namespace hushbox
