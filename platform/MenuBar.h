#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/Image.h"

namespace hushbox {

/// One row of a menu.
struct MenuRow {
  enum class Kind {
    /// A line of text, shown greyed and not selectable.
    text,
    separator,
    /// Does something when it is chosen.
    button,
    /// Carries a check mark while `on`; choosing it asks for the other value.
    toggle
  };

  Kind kind = Kind::separator;
  std::string text{};
  /// Whether `text` is a localisation key of the main bundle rather than shown as it stands.
  bool localized = false;
  bool enabled = false;
  bool on = false;
  /// The letter that chooses the row together with the platform's command key; empty for none.
  std::string keyEquivalent{};
  /// What choosing the row does, on the main thread. Empty for texts and separators. Not part of
  /// what the row looks like.
  std::function<void()> action{};

  /// Whether the rows look and read the same.
  friend bool operator==(const MenuRow& a, const MenuRow& b) {
    return a.kind == b.kind && a.text == b.text && a.localized == b.localized &&
           a.enabled == b.enabled && a.on == b.on && a.keyEquivalent == b.keyEquivalent;
  }
};

/// The program's one item in the menu bar (or the panel), with an icon and a pull-down menu.
/// Main thread only.
class MenuBar {
 public:
  virtual ~MenuBar() = default;

  /// Shows the item with this icon, in place of the one before. `description` says the state in
  /// words, for those who do not see the icon.
  virtual void setIcon(const Image& icon, const std::string& description) = 0;

  /// Shows these rows from now on; a menu that is open changes in place.
  virtual void setRows(std::vector<MenuRow> rows) = 0;
};

}  // namespace hushbox
