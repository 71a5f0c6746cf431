#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"
#include "rehearsal/ItemMenu.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// A real panel (xfce4-panel with nothing but its tray) along the top of the session's display, and
/// a hand that clicks on the one item in it.
///
/// The item is at the right end. What the hand does is done with the pointer (xdotool), so that
/// what a test clicks on is what a person would see there.
class Panel {
 public:
  enum class Tone { Dark, Light };

  /// A part of the display, in pixels from its top left corner.
  struct Area {
    int x = 0, y = 0, width = 0, height = 0;
  };

  /// Returns once it takes items. Throws DeskError without a display or when a program is missing.
  explicit Panel(Session& session, Tone tone = Tone::Dark);

  void setTone(Tone tone);

  pid_t pid() const { return process_->pid(); }
  /// Ends it as a crash would.
  void kill() { process_->kill(); }
  void freeze() { process_->freeze(); }
  void thaw() { process_->thaw(); }

  /// The items that have registered, as the panel's watcher has them; empty when it is gone.
  std::vector<std::string> items() const;
  /// Waits until the item is shown and returns where. Throws DeskError at the deadline.
  Area waitForItem() const;
  /// The first item's menu. Throws DeskError when there is no item.
  ItemMenu itemMenu() const;
  /// What the first item's tool tip says. The item must live in another process.
  std::string toolTip() const;

  /// Clicks on the item and waits for its menu, like waitForMenu().
  Area openMenu();
  /// Where the open menu is; nothing when none is open.
  std::optional<Area> menu() const;
  /// Waits until the open menu is as high as the item's present rows make it, and returns where it
  /// is: a panel learns of new rows in its own time. Throws DeskError at the deadline.
  Area waitForMenu() const;
  /// Clicks in the open menu on the row with that text, reckoning its place from the heights: all
  /// rows are equally high, and separators a pixel. Throws DeskError when there is no such row.
  void clickRow(const std::string& text);
  /// Clicks in the open menu on the row with that text until the menu has closed over it: a click
  /// that comes before the menu has the pointer to itself is lost, and leaves it open.
  void chooseRow(const std::string& text);
  void closeMenu();

  /// Moves the pointer away, so that nothing is highlighted and no tool tip is in the way.
  void movePointerAway() const;

  /// Writes what an area of the display shows into a PNG file.
  void picture(const Area& area, const std::filesystem::path& file) const;

 private:
  using Row = ItemMenu::Row;
  static int separatorsIn(const std::vector<Row>& rows, std::size_t count);

  void configure(Session& session) const;
  /// The bus name of the first item.
  std::string item() const;
  /// The height of one row of the open menu; nothing when it has other rows than those.
  std::optional<int> rowHeight(const std::vector<Row>& rows) const;
  std::vector<Area> windows() const;
  void click(int x, int y) const;
  std::string run(std::vector<std::string> command) const;

  Session& session_;
  BusConnection bus_;
  std::unique_ptr<ServerProcess> process_;
  mutable int runs_ = 0;
};

}  // namespace hushbox::rehearsal
