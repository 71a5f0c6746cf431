#include "platform/linux/menubar/StatusNotifierMenuBar.h"

#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/linux/menubar/PanelText.h"
#include "support/BundleIdentifier.h"

namespace hushbox {
namespace {

std::string_view currentDesktop() {
  const char* const desktop = std::getenv("XDG_CURRENT_DESKTOP");
  return desktop ? desktop : "";
}

}  // namespace

StatusNotifierMenuBar::StatusNotifierMenuBar(SessionBusConnection& bus, UnifiedLog& log,
                                             std::chrono::milliseconds timeout,
                                             const std::filesystem::path& iconFolder)
    : bus_(bus),
      log_(log),
      panelTimer_(g_timeout_add(
          static_cast<guint>(timeout.count()),
          [](gpointer self) -> gboolean {
            static_cast<StatusNotifierMenuBar*>(self)->panelTimedOut();
            return G_SOURCE_REMOVE;
          },
          this)),
      item_(
          bus,
          [this](const std::string& reason) {
            reportAbsence("The panel does not take the item (" + reason + ")");
          },
          iconFolder),
      busSubscription_(bus.observe([this](GDBusConnection* connection) { connected(connection); },
                                   [this](const std::string& reason) { lost(reason); })) {
  guessPanel();
  bus_.connect();
}

StatusNotifierMenuBar::~StatusNotifierMenuBar() {
  if (panelTimer_) g_source_remove(panelTimer_);
}

void StatusNotifierMenuBar::setIcon(const Image& icon, const std::string& description) {
  item_.setIcon(icon, description);
  bus_.connect();
}

void StatusNotifierMenuBar::setRows(std::vector<MenuRow> rows) {
  menu_.setRows(std::move(rows));
  bus_.connect();
}

void StatusNotifierMenuBar::connected(GDBusConnection* connection) {
  theme_.emplace(currentDesktop(), [this] { guessPanel(); });
  guessPanel();
  indicators_.emplace(bus_, connection, [this](bool isWatcher) { item_.setNeedsNames(isWatcher); });
  // The menu first: a panel looks for it as soon as it sees the item.
  menu_.exportOn(connection);
  item_.exportOn(connection);
  colorScheme_.emplace(bus_, connection, [this](ColorScheme scheme) {
    preferred_ = scheme;
    guessPanel();
  });
}

void StatusNotifierMenuBar::lost(const std::string& reason) {
  colorScheme_.reset();
  theme_.reset();
  indicators_.reset();
  item_.setNeedsNames(false);
  item_.withdraw();
  menu_.withdraw();
  reportAbsence("There is no session bus (" + reason + ")");
}

void StatusNotifierMenuBar::guessPanel() {
  const std::string_view desktop = currentDesktop();
  const PanelTone theme = theme_ ? theme_->tone() : PanelTone::unknown;
  item_.setPanelTone(guessPanelTone(preferred_, desktop, theme), recoloursSymbolicIcons(desktop),
                     enlargesPixels(desktop));
}

void StatusNotifierMenuBar::panelTimedOut() {
  panelTimer_ = 0;
  if (item_.isRegistered()) return;
  if (!bus_.isConnected()) return reportAbsence("The session bus does not reply");
  reportAbsence(
      "No panel on this desktop shows status items (org.kde.StatusNotifierWatcher has no owner; "
      "GNOME needs its AppIndicator extension)");
}

void StatusNotifierMenuBar::reportAbsence(const std::string& text) {
  if (std::exchange(reported_, true)) return;
  log_.write(bundleIdentifier, "panel", LogLevel::error,
             panelText(text) + ". Hushbox runs without its icon.");
}

}  // namespace hushbox
