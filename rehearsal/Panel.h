#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"
#include "rehearsal/ItemMenu.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// A real panel (xfce4-panel with only its tray) along the top of the session's display, and the
/// mouse that clicks the one item in it.
///
/// The item is at the right end. Clicks go through the X pointer (xdotool), so a test clicks what a
/// person would see.
class Panel {
 public:
  enum class Tone { Dark, Light };

  /// A rectangle of the display, in pixels from its top left corner.
  struct Area {
    int x = 0, y = 0, width = 0, height = 0;
  };

  /// Starts the panel and waits until it accepts items. Throws DeskError if the session has no
  /// display or a program is not installed.
  explicit Panel(Session& session, Tone tone = Tone::Dark);

  void setTone(Tone tone);

  pid_t pid() const { return process_->pid(); }
  /// Kills the panel with SIGKILL, as in a crash.
  void kill() { process_->kill(); }
  void freeze() { process_->freeze(); }
  void thaw() { process_->thaw(); }

  /// The registered items, in the watcher's notation (bus name and object path). Returns an empty
  /// list if the watcher is not running.
  std::vector<std::string> items() const;
  /// Waits until the item is visible and returns its place. Throws DeskError at the deadline.
  Area waitForItem() const;
  /// The first item's menu. Throws DeskError if there is no item.
  ItemMenu itemMenu() const;
  /// The title of the first item's tool tip. The item must belong to another process: this call
  /// blocks.
  std::string toolTip() const;

  /// Clicks the item and waits for its menu, like waitForMenu().
  Area openMenu();
  /// The place of the open menu; nullopt if no menu is open.
  std::optional<Area> menu() const;
  /// Waits until the open menu's height fits the item's current rows, and returns the menu's place.
  /// The panel shows new rows with a delay. Throws DeskError at the deadline.
  Area waitForMenu() const;
  /// Clicks the row with that text in the open menu. Its place is calculated: all rows are equally
  /// high, and a separator is one pixel. Throws DeskError if there is no such row.
  void clickRow(const std::string& text);
  /// Clicks the row with that text until the menu closes. A click before the menu has grabbed the
  /// pointer is lost and leaves the menu open.
  void chooseRow(const std::string& text);
  void closeMenu();

  /// Moves the pointer to an empty place, so that nothing is highlighted and no tool tip is shown.
  void movePointerAway() const;

  /// Writes a screenshot of an area to a PNG file.
  void picture(const Area& area, const std::filesystem::path& file) const;

 private:
  using Row = ItemMenu::Row;
  static int separatorsIn(const std::vector<Row>& rows, std::size_t count);

  void configure(Session& session) const;
  /// The bus name of the first item.
  std::string item() const;
  /// The height of one row of the open menu; nullopt if the menu's height does not fit `rows`.
  std::optional<int> rowHeight(const std::vector<Row>& rows) const;
  std::vector<Area> windows() const;
  void click(int x, int y) const;
  /// Repeats the action until it takes effect. Throws DeskError after a few attempts.
  static void repeatUntil(const std::function<void()>& action, const std::function<bool()>& effect,
                          const std::string& awaited);
  std::string run(std::vector<std::string> command) const;

  Session& session_;
  BusConnection bus_;
  std::unique_ptr<ServerProcess> process_;
  mutable int runs_ = 0;
};

}  // namespace hushbox::rehearsal
