#include "platform/MenuBar.h"

#include <algorithm>
#include <compare>

namespace hushbox {
namespace {

bool canContinue(const MenuRow& shown, const MenuRow& row) {
  if (shown.kind != row.kind) return false;
  const bool canBeChosen = row.kind == MenuRow::Kind::button || row.kind == MenuRow::Kind::toggle;
  return !canBeChosen || shown.text == row.text;
}

/// How good a pairing is: first by how many rows continue, then by how many with the same text.
struct Score {
  int continued = 0;
  int unchanged = 0;

  auto operator<=>(const Score&) const = default;
};

/// The best pairing that keeps the order, found as the longest common subsequence is.
class Pairing {
 public:
  Pairing(const std::vector<MenuRow>& shown, const std::vector<MenuRow>& rows)
      : shown_(shown), rows_(rows), columns_(rows.size() + 1) {
    best_.resize((shown.size() + 1) * columns_);
    for (std::size_t i = shown.size(); i-- > 0;) {
      for (std::size_t j = rows.size(); j-- > 0;)
        best(i, j) = std::max({best(i + 1, j), best(i, j + 1), paired(i, j)});
    }
  }

  std::vector<std::optional<std::size_t>> continued() {
    std::vector<std::optional<std::size_t>> indices(rows_.size());
    for (std::size_t i = 0, j = 0; i < shown_.size() && j < rows_.size();) {
      if (canContinue(shown_[i], rows_[j]) && best(i, j) == paired(i, j)) {
        indices[j++] = i++;
      } else if (best(i, j) == best(i, j + 1)) {
        ++j;
      } else {
        ++i;
      }
    }
    return indices;
  }

 private:
  /// The score of the best pairing of the shown rows from `i` on with the rows from `j` on.
  Score& best(std::size_t i, std::size_t j) { return best_[i * columns_ + j]; }

  Score paired(std::size_t i, std::size_t j) {
    if (!canContinue(shown_[i], rows_[j])) return {};
    const Score rest = best(i + 1, j + 1);
    return {rest.continued + 1, rest.unchanged + (shown_[i].text == rows_[j].text)};
  }

  const std::vector<MenuRow>& shown_;
  const std::vector<MenuRow>& rows_;
  std::size_t columns_;
  std::vector<Score> best_;
};

}  // namespace

std::vector<std::optional<std::size_t>> continuedRows(const std::vector<MenuRow>& shown,
                                                      const std::vector<MenuRow>& rows) {
  return Pairing(shown, rows).continued();
}

}  // namespace hushbox
