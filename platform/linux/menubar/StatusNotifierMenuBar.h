#pragma once

#include <gio/gio.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "platform/MenuBar.h"
#include "platform/UnifiedLog.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "platform/linux/menubar/ColorSchemeSetting.h"
#include "platform/linux/menubar/DBusMenu.h"
#include "platform/linux/menubar/StatusNotifierItem.h"

namespace hushbox {

/// The item in the panel: a StatusNotifierItem with its menu, on a session-bus connection of its
/// own. Main thread and default main context.
///
/// Works with whatever is there. Without a session bus, without a panel that takes items (GNOME's
/// needs its AppIndicator extension), and after either is gone, the program runs on without an icon
/// and the log has one line about it; when a panel appears, so does the item. A bus that comes
/// later is found at the next change of icon or rows. Idle, it has no timer and sends nothing.
class StatusNotifierMenuBar final : public MenuBar {
 public:
  /// How long a starting session may take to bring up its panel before the log says that there is
  /// none.
  static constexpr std::chrono::milliseconds patience{10'000};

  /// `log` must outlive this.
  explicit StatusNotifierMenuBar(UnifiedLog& log,
                                 std::chrono::milliseconds panelPatience = patience);
  ~StatusNotifierMenuBar() override;

  void setIcon(const Image& icon, const std::string& description) override;
  void setRows(std::vector<MenuRow> rows) override;

 private:
  void connected(GDBusConnection* connection);
  void lost(const std::string& reason);
  void guessPanel(ColorScheme scheme);
  void patienceEnded();
  /// Writes the first of all such lines.
  void reportAbsence(const std::string& text);

  UnifiedLog& log_;
  bool reported_ = false;
  guint patienceTimer_;
  DBusMenu menu_;
  StatusNotifierItem item_;
  std::optional<ColorSchemeSetting> colorScheme_;
  SessionBusConnection bus_;
};

}  // namespace hushbox
