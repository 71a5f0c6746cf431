#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Image.h"

namespace hushbox {

/// One row of a menu.
struct MenuRow {
  enum class Kind {
    /// A line of text, greyed out and not selectable.
    text,
    separator,
    /// Runs its action when chosen.
    button,
    /// Has a check mark while `on`. Choosing it runs the action, which decides about the mark.
    toggle
  };

  Kind kind = Kind::separator;
  std::string text{};
  /// Whether to look `text` up in the main bundle's translations, where the platform has any,
  /// instead of showing it as it is.
  bool localized = false;
  bool enabled = false;
  bool on = false;
  /// The letter of the keyboard shortcut, pressed with the platform's command key; empty for none.
  std::string keyEquivalent{};
  /// Called on the main thread when the row is chosen; empty for texts and separators.
  std::function<void()> action{};

  /// Whether the rows look the same; actions are not compared.
  friend bool operator==(const MenuRow& a, const MenuRow& b) {
    return a.kind == b.kind && a.text == b.text && a.localized == b.localized &&
           a.enabled == b.enabled && a.on == b.on && a.keyEquivalent == b.keyEquivalent;
  }
};

/// For each of `rows`, the index of the row in `shown` that it continues; nullopt for a new one.
///
/// A row that continues keeps its item in the menu, so that a menu can change while it is open, and
/// a click under way reaches the row that was clicked on or none: a button or a toggle continues
/// one of the same kind and text, a text or a separator one of the same kind. Rows keep their
/// order. Within that, as many rows as possible continue, and as many as possible with the same
/// text.
std::vector<std::optional<std::size_t>> continuedRows(const std::vector<MenuRow>& shown,
                                                      const std::vector<MenuRow>& rows);

/// The program's item in the menu bar (on Linux, the panel): an icon and a pull-down menu. Main
/// thread only. Without a panel the calls have no visible effect.
class MenuBar {
 public:
  virtual ~MenuBar() = default;

  /// Replaces the icon. `description` says what it shows, for screen readers and tooltips.
  virtual void setIcon(const Image& icon, const std::string& description) = 0;

  /// Replaces the rows. An open menu changes in place.
  virtual void setRows(std::vector<MenuRow> rows) = 0;
};

}  // namespace hushbox
