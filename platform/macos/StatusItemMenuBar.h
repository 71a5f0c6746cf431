#pragma once

#include <memory>

#include "platform/MenuBar.h"

namespace hushbox {

/// The item in the menu bar with its pull-down menu. Main thread only; to be made after the shared
/// application. The item is there from the beginning and leaves the menu bar with this.
///
/// A menu may be open while its rows change, with the user about to choose one. So a row that
/// continues another keeps its native item, which is edited in place; see continuedRows().
///
/// The icon is drawn afresh from its vectors at each rendering, at the display's density. In which
/// colours a template appears is the menu bar's affair.
class StatusItemMenuBar final : public MenuBar {
 public:
  StatusItemMenuBar();
  ~StatusItemMenuBar() override;
  StatusItemMenuBar(const StatusItemMenuBar&) = delete;
  StatusItemMenuBar& operator=(const StatusItemMenuBar&) = delete;

  /// `description` is the item's label for accessibility.
  void setIcon(const Image& icon, const std::string& description) override;

  void setRows(std::vector<MenuRow> rows) override;

 private:
  /// The native objects, so that this header is plain C++.
  struct Item;

  const std::unique_ptr<Item> item_;
};

}  // namespace hushbox
