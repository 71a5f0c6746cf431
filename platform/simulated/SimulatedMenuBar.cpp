#include "platform/simulated/SimulatedMenuBar.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/simulated/RecordingCanvas.h"

namespace hushbox {
namespace {

std::string rowLine(const MenuRow& row) {
  if (row.kind == MenuRow::Kind::separator) return "---";
  std::string line = row.text;
  if (row.kind == MenuRow::Kind::toggle) line = (row.on ? "[x] " : "[ ] ") + line;
  if (!row.enabled) line = '(' + line + ')';
  if (!row.keyEquivalent.empty()) line += " (key " + row.keyEquivalent + ')';
  return line;
}

}  // namespace

Lines SimulatedMenuBar::drawing() const {
  RecordingCanvas canvas;
  if (!icon_.draw || !icon_.draw(&canvas)) return {};
  return canvas.lines();
}

Lines SimulatedMenuBar::rowLines() const {
  Lines lines;
  std::transform(rows_.begin(), rows_.end(), std::back_inserter(lines), rowLine);
  return lines;
}

bool SimulatedMenuBar::choose(std::string_view text) {
  const auto row = std::find_if(rows_.begin(), rows_.end(),
                                [text](const MenuRow& one) { return one.text == text; });
  if (row == rows_.end() || !row->enabled || !row->action) return false;
  // Copied, because the action may replace the rows.
  const auto action = row->action;
  action();
  return true;
}

void SimulatedMenuBar::chooseEveryRow() {
  for (const MenuRow& row : std::vector(rows_)) {
    if (row.action) row.action();
  }
}

void SimulatedMenuBar::setIcon(const Image& icon, const std::string& description) {
  loop_.requireMainThread("setIcon");
  journal_.add("menu", "icon \"", description, '"');
  icon_ = icon;
  description_ = description;
  ++iconCount_;
}

void SimulatedMenuBar::setRows(std::vector<MenuRow> rows) {
  loop_.requireMainThread("setRows");
  journal_.add("menu", "rows ", rows.size());
  rows_ = std::move(rows);
  ++rowsCount_;
}

}  // namespace hushbox
