#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/linux/menubar/StatusNotifierMenuBar.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/BusClient.h"
#include "tests/platform/linux/fixtures/KeptLog.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::holdsWithin;
using rehearsal::serverTimeout;
using rehearsal::Session;
using rehearsal::waitUntil;

constexpr const char* program = "/usr/bin/lxqt-panel";
constexpr int panelHeight = 32;
constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";

/// A panel along the bottom of the display, with the item at its right end.
constexpr const char* configuration =
    "[General]\npanels=panel1\n"
    "[panel1]\nplugins=spacer,statusnotifier\nposition=Bottom\npanelSize=32\niconSize=22\n"
    "width=100\nwidth-percent=true\n"
    "[spacer]\ntype=spacer\nexpandable=true\n"
    "[statusnotifier]\ntype=statusnotifier\nalignment=Right\n";

/// The item in LXQt's panel, which opens menus on a right click only.
class StatusNotifierItemLxqtTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(program)) GTEST_SKIP() << "lxqt-panel is not installed.";
    unsetenv("XDG_CURRENT_DESKTOP");
    session_.applyToThisProcess();
    const auto folder = session_.home() / ".config" / "lxqt";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "panel.conf") << configuration;
    panel_ = session_.start("lxqt-panel.log", {"env", "XDG_CURRENT_DESKTOP=LXQt", program});
    const rehearsal::BusConnection bus(session_.busAddress());
    panel_->waitUntilReady([&] { return bus.hasOwner(watcherName); }, "LXQt's panel");
    menuBar_ = std::make_unique<StatusNotifierMenuBar>(bus_, log_);
    menuBar_->setIcon(LuchadorArt::menuBarImage(false, true, {}), "Not on a call");
    menuBar_->setRows(
        {{.kind = MenuRow::Kind::text, .text = "Not on a call"},
         {.kind = MenuRow::Kind::button, .text = "Quit Hushbox", .enabled = true, .action = [this] {
            isChosen_ = true;
          }}});
  }

  std::string run(const std::string& command) {
    const std::string log = "command-" + std::to_string(++runs_) + ".log";
    const auto process = session_.start(log, {"sh", "-c", command});
    waitUntil([&] { return !process->isRunning(); }, serverTimeout, command);
    std::ifstream file(session_.folder() / log);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  struct Area {
    int x = 0, y = 0, width = 0, height = 0;
  };

  /// The visible windows of the panel: the panel itself, its menu and its tool tip.
  std::vector<Area> windows() {
    std::istringstream lines(
        run("for window in $(xdotool search --onlyvisible --class lxqt-panel); do"
            " xdotool getwindowgeometry --shell $window | grep -E '^(X|Y|WIDTH|HEIGHT)=' |"
            " cut -d= -f2 | tr '\\n' ' '; echo; done"));
    std::vector<Area> areas;
    for (Area area; lines >> area.x >> area.y >> area.width >> area.height;) areas.push_back(area);
    return areas;
  }

  /// The only window that is higher than the panel.
  std::optional<Area> menu() {
    for (const Area& area : windows())
      if (area.height > panelHeight) return area;
    return std::nullopt;
  }

  Session session_{{.display = true}};
  std::unique_ptr<rehearsal::ServerProcess> panel_;
  KeptLog log_;
  SessionBusConnection bus_;
  std::unique_ptr<StatusNotifierMenuBar> menuBar_;
  bool isChosen_ = false;
  int runs_ = 0;
};

TEST_F(StatusNotifierItemLxqtTest, LeftClickOpensTheMenu) {
  waitUntil([this] { return !windows().empty(); }, serverTimeout, "LXQt's panel");
  EXPECT_FALSE(menu());
  waitUntil(
      [this] {
        // Until the item is shown, the click does nothing.
        run("xdotool mousemove 1264 784 click 1");
        return holdsWithin([this] { return menu().has_value(); }, 2s);
      },
      serverTimeout, "the menu to open");
  const Area area = *menu();
  // On the last row.
  run("xdotool mousemove " + std::to_string(area.x + area.width / 2) + " " +
      std::to_string(area.y + area.height - 12) + " click 1");
  EXPECT_TRUE(holdsWithin([this] { return isChosen_; }, serverTimeout));
}

}  // namespace
}  // namespace hushbox
