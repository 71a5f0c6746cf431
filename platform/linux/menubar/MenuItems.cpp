#include "platform/linux/menubar/MenuItems.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace hushbox {
namespace {

bool isSameRow(const MenuRow& a, const MenuRow& b) {
  if (a.kind != b.kind) return false;
  const bool canBeChosen = a.kind == MenuRow::Kind::button || a.kind == MenuRow::Kind::toggle;
  return !canBeChosen || a.text == b.text;
}

/// How good a pairing of rows is: the more rows stay the better, then the more of them unchanged.
struct Score {
  int staying = 0;
  int unchanged = 0;

  auto operator<=>(const Score&) const = default;
};

/// The best pairing that keeps the order, as in a longest common subsequence.
class Pairing {
 public:
  Pairing(const std::vector<MenuItem>& before, const std::vector<MenuRow>& after)
      : before_(before), after_(after), columns_(after.size() + 1) {
    best_.resize((before.size() + 1) * columns_);
    for (std::size_t i = before.size(); i-- > 0;) {
      for (std::size_t j = after.size(); j-- > 0;)
        best(i, j) = std::max({best(i + 1, j), best(i, j + 1), paired(i, j)});
    }
  }

  /// For each row the number that it keeps, or 0.
  std::vector<std::int32_t> keptIds() {
    std::vector<std::int32_t> ids(after_.size());
    for (std::size_t i = 0, j = 0; i < before_.size() && j < after_.size();) {
      if (isSameRow(before_[i].row, after_[j]) && best(i, j) == paired(i, j)) {
        ids[j++] = before_[i++].id;
      } else if (best(i, j) == best(i, j + 1)) {
        ++j;
      } else {
        ++i;
      }
    }
    return ids;
  }

 private:
  Score& best(std::size_t i, std::size_t j) { return best_[i * columns_ + j]; }

  Score paired(std::size_t i, std::size_t j) {
    const MenuRow &old = before_[i].row, &row = after_[j];
    if (!isSameRow(old, row)) return {};
    const Score rest = best(i + 1, j + 1);
    return {rest.staying + 1, rest.unchanged + (old.text == row.text)};
  }

  const std::vector<MenuItem>& before_;
  const std::vector<MenuRow>& after_;
  std::size_t columns_;
  std::vector<Score> best_;
};

}  // namespace

std::vector<MenuItem> MenuItems::replace(std::vector<MenuRow> rows) {
  const std::vector<std::int32_t> kept = Pairing(items_, rows).keptIds();
  std::vector<MenuItem> items;
  for (std::size_t i = 0; i < rows.size(); ++i)
    items.push_back({kept[i] ? kept[i] : ++lastId_, std::move(rows[i])});
  return std::exchange(items_, std::move(items));
}

const MenuItem* MenuItems::find(std::int32_t id) const {
  const auto item = std::ranges::find(items_, id, &MenuItem::id);
  return item == items_.end() ? nullptr : &*item;
}

}  // namespace hushbox
