#pragma once

#include <gio/gio.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/MenuBar.h"
#include "platform/UnifiedLog.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "platform/linux/menubar/ColorSchemeSetting.h"
#include "platform/linux/menubar/DBusMenu.h"
#include "platform/linux/menubar/IndicatorService.h"
#include "platform/linux/menubar/PanelTheme.h"
#include "platform/linux/menubar/StatusNotifierItem.h"

namespace hushbox {

/// The item in the panel: a StatusNotifierItem with its menu. Main thread and default main context.
///
/// Without a session bus, without a panel that shows items (GNOME's needs its AppIndicator
/// extension), and after either has exited, the program keeps running without an icon and logs one
/// line. When a panel or the bus comes back, so does the item. While nothing changes, it has no
/// timer and sends nothing.
class StatusNotifierMenuBar final : public MenuBar {
 public:
  /// How long a session that is starting may take to start its panel; then the log says that there
  /// is none.
  static constexpr std::chrono::milliseconds panelTimeout{10'000};

  /// `bus` and `log` must outlive this. `iconFolder` has the icons; see StatusNotifierItem.
  StatusNotifierMenuBar(SessionBusConnection& bus, UnifiedLog& log,
                        std::chrono::milliseconds timeout = panelTimeout,
                        const std::filesystem::path& iconFolder = {});
  ~StatusNotifierMenuBar() override;

  void setIcon(const Image& icon, const std::string& description) override;
  void setRows(std::vector<MenuRow> rows) override;

 private:
  void connected(GDBusConnection* connection);
  void lost(const std::string& reason);
  void guessPanel();
  void panelTimedOut();
  /// Logs the first such report only.
  void reportAbsence(const std::string& text);

  SessionBusConnection& bus_;
  UnifiedLog& log_;
  bool reported_ = false;
  guint panelTimer_;
  DBusMenu menu_;
  StatusNotifierItem item_;
  ColorScheme preferred_ = ColorScheme::noPreference;
  std::optional<ColorSchemeSetting> colorScheme_;
  std::optional<IndicatorService> indicators_;
  std::optional<PanelTheme> theme_;
  Subscription busSubscription_;
};

}  // namespace hushbox
