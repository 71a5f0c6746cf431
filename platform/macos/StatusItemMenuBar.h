#pragma once

#include <memory>

#include "platform/MenuBar.h"

namespace hushbox {

/// The status item with its pull-down menu. Main thread only; create it after the shared
/// application. The item appears in the menu bar on construction and is removed on destruction.
///
/// Rows may change while the menu is open and the user is about to choose one. So a row that
/// continues another keeps its native item, which is edited in place; see continuedRows().
///
/// Each rendering draws the icon from its vectors at the display's resolution. The menu bar chooses
/// the colours of a template image.
class StatusItemMenuBar final : public MenuBar {
 public:
  StatusItemMenuBar();
  ~StatusItemMenuBar() override;
  StatusItemMenuBar(const StatusItemMenuBar&) = delete;
  StatusItemMenuBar& operator=(const StatusItemMenuBar&) = delete;

  /// `description` becomes the item's accessibility label and tool tip.
  void setIcon(const Image& icon, const std::string& description) override;

  void setRows(std::vector<MenuRow> rows) override;

 private:
  /// Hides the native objects, so that this header is plain C++.
  struct Item;

  const std::unique_ptr<Item> item_;
};

}  // namespace hushbox
