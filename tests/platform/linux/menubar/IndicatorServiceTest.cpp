#include "platform/linux/menubar/IndicatorService.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "rehearsal/ScratchFolder.h"
#include "rehearsal/ServerProcess.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::serverTimeout;
using testing::ElementsAre;
using testing::IsEmpty;

/// The watcher is in this process, and so is a name that the client owns.
class IndicatorServiceTest : public PanelFixture {
 protected:
  static constexpr const char* indicators = "org.ayatana.indicator.application";

  IndicatorServiceTest() {
    const auto folder = icons_.path() / "hicolor/scalable/apps";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "org.hushbox.Hushbox.red-muted.svg") << "<svg/>";
  }

  /// Sets up an item with a coloured icon.
  void startOnACall() {
    start(icons_.path());
    menuBar_->setIcon(icon(Color::systemRed, true), "On a call — muted");
    client_->takeSignals();
  }

  bool iconNameBecomes(const std::string& name) {
    return rehearsal::holdsWithin([&] { return ofItem("IconName").text() == "'" + name + "'"; },
                                  serverTimeout);
  }

  void requestName() {
    client_->call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
                  g_variant_new("(su)", indicators, 0));
  }

  rehearsal::ScratchFolder icons_;
};

TEST_F(IndicatorServiceTest, ColouredIconIsSentByNameWhileTheServiceIsTheWatcher) {
  startOnACall();
  EXPECT_EQ(ofItem("IconName").text(), "''");
  requestName();
  EXPECT_TRUE(iconNameBecomes("org.hushbox.Hushbox.red-muted"));
  EXPECT_THAT(client_->takeSignals(), ElementsAre("NewIcon"));
  menuBar_->setIcon(icon(Color::systemGreen), "On a call — live");
  EXPECT_EQ(ofItem("IconName").text(), "''") << "its icon is not installed";
  menuBar_->setIcon(icon(Color::systemRed, true), "On a call — muted");
  client_->call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "ReleaseName",
                g_variant_new("(s)", indicators));
  EXPECT_TRUE(iconNameBecomes(""));
}

TEST_F(IndicatorServiceTest, PixelsAreSentOnceThatWatcherIsGone) {
  requestName();
  startOnACall();
  EXPECT_TRUE(iconNameBecomes("org.hushbox.Hushbox.red-muted"));
  watcher_.reset();
  EXPECT_TRUE(iconNameBecomes(""));
}

TEST_F(IndicatorServiceTest, ServiceOfAnotherProcessThanTheWatchersDoesNotCount) {
  const auto service = session_.start(
      "indicators", {"/usr/bin/python3", "-c",
                     "import sys\nfrom gi.repository import Gio, GLib\n"
                     "Gio.bus_own_name(Gio.BusType.SESSION, sys.argv[1], 0, None, None, None)\n"
                     "GLib.MainLoop().run()",
                     indicators});
  service->waitUntilReady(
      [&] {
        return client_
                   ->call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner",
                          g_variant_new("(s)", indicators))
                   .text() == "(true,)";
      },
      "the service");
  startOnACall();
  rehearsal::letPass(100ms);
  EXPECT_EQ(ofItem("IconName").text(), "''");
  EXPECT_THAT(client_->takeSignals(), IsEmpty());
}

}  // namespace
}  // namespace hushbox
