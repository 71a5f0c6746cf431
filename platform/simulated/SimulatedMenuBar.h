#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/MenuBar.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// A menu bar that keeps what it shows. Lines of the journal: "icon \"description\"", "rows 8".
class SimulatedMenuBar final : public MenuBar {
 public:
  SimulatedMenuBar(Journal& journal, const SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  const Image& icon() const { return icon_; }
  const std::string& description() const { return description_; }
  /// What drawing the icon comes to, one operation a line; empty when it does not draw.
  Lines drawing() const;

  const std::vector<MenuRow>& rows() const { return rows_; }
  /// The rows as a user reads them: "(text)" for one that cannot be chosen, "---" for a separator,
  /// "text" for a button, "[x] text" or "[ ] text" for a toggle, with " (key q)" where there is
  /// one.
  Lines rowLines() const;

  /// How often each was shown.
  std::size_t iconCount() const { return iconCount_; }
  std::size_t rowsCount() const { return rowsCount_; }

  /// The user chooses the first row with that text. False when there is none that can be chosen.
  bool choose(std::string_view text);
  /// Runs the action of every row, whether or not a user could choose it.
  void chooseEveryRow();

  void setIcon(const Image& icon, const std::string& description) override;
  void setRows(std::vector<MenuRow> rows) override;

 private:
  Journal& journal_;
  const SimulatedMainLoop& loop_;
  Image icon_;
  std::string description_;
  std::vector<MenuRow> rows_;
  std::size_t iconCount_ = 0;
  std::size_t rowsCount_ = 0;
};

}  // namespace hushbox
