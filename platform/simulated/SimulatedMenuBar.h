#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/MenuBar.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// A menu bar in memory. Journal lines: "icon \"description\"", "rows 8".
class SimulatedMenuBar final : public MenuBar {
 public:
  SimulatedMenuBar(Journal& journal, const SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  const Image& icon() const { return icon_; }
  const std::string& description() const { return description_; }
  /// Returns the operations that draw the icon, one per line; empty if it does not draw.
  Lines drawing() const;

  const std::vector<MenuRow>& rows() const { return rows_; }
  /// Returns the rows as a user reads them: "(text)" for a text, "---" for a separator, "text" for
  /// a button, "[x] text" or "[ ] text" for a toggle; " (key q)" follows where there is a shortcut.
  Lines rowLines() const;

  /// How often the icon and the rows were set.
  std::size_t iconCount() const { return iconCount_; }
  std::size_t rowsCount() const { return rowsCount_; }

  /// The user chooses the first row with that text. Returns false if there is none or it cannot be
  /// chosen.
  bool choose(std::string_view text);
  /// Runs the action of every row, even of those that a user cannot choose.
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
