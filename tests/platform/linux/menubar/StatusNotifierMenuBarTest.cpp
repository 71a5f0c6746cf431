#include "platform/linux/menubar/StatusNotifierMenuBar.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>

#include "platform/linux/menubar/IconPixmap.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::letPass;
using rehearsal::patience;
using rehearsal::waitUntil;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using Clock = std::chrono::steady_clock;

class StatusNotifierMenuBarTest : public PanelFixture {
 protected:
  void startWatcher(bool refusing = false) {
    watcher_ = std::make_unique<Watcher>(session_.busAddress(), refusing);
  }
  void startMenuBar(std::chrono::milliseconds panelTimeout = 10s) {
    menuBar_ = std::make_unique<StatusNotifierMenuBar>(*sessionBus_, log_, panelTimeout);
    menuBar_->setIcon(icon(), "Not on a call");
    menuBar_->setRows({{.kind = MenuRow::Kind::text, .text = "Not on a call"}});
  }
  void waitForLog() {
    waitUntil([&] { return !log_.lines.empty(); }, patience, "a line in the log");
  }
};

TEST_F(StatusNotifierMenuBarTest, RegistersWithAWatcherThatIsThere) {
  startWatcher();
  startMenuBar();
  watcher_->waitForItem();
  EXPECT_THAT(watcher_->items(), SizeIs(1));
  EXPECT_THAT(watcher_->items().front(), testing::StartsWith(":"));
}

TEST_F(StatusNotifierMenuBarTest, RegistersWithAWatcherThatComesLater) {
  startMenuBar();
  letPass(100ms);
  startWatcher();
  watcher_->waitForItem();
}

TEST_F(StatusNotifierMenuBarTest, RegistersAgainEachTimeAWatcherDiesAndComesBack) {
  startMenuBar();
  for (int i = 0; i < 3; ++i) {
    startWatcher();
    watcher_->waitForItem();
    watcher_.reset();
    letPass(20ms);
  }
  EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(StatusNotifierMenuBarTest, WaitsForItsIconBeforeItRegisters) {
  startWatcher();
  menuBar_ = std::make_unique<StatusNotifierMenuBar>(*sessionBus_, log_);
  menuBar_->setRows({});
  letPass(100ms);
  EXPECT_THAT(watcher_->items(), IsEmpty());
  menuBar_->setIcon(icon(), "");
  watcher_->waitForItem();
}

TEST_F(StatusNotifierMenuBarTest, DesktopWithoutAWatcherIsLoggedOnceAndLateOnly) {
  const auto begin = Clock::now();
  startMenuBar(150ms);
  waitForLog();
  EXPECT_GE(Clock::now() - begin, 150ms);
  menuBar_->setIcon(icon(Color::systemRed), "On a call");
  letPass(400ms);
  EXPECT_THAT(log_.lines, ElementsAre(AllOf(HasSubstr("StatusNotifierWatcher"),
                                            HasSubstr("works on without its icon"))));
  startWatcher();
  watcher_->waitForItem();
}

TEST_F(StatusNotifierMenuBarTest, WatcherInTimeLeavesTheLogAlone) {
  startWatcher();
  startMenuBar(3s);
  watcher_->waitForItem();
  letPass(3200ms);
  EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(StatusNotifierMenuBarTest, WatcherThatRefusesIsLogged) {
  startWatcher(true);
  startMenuBar(3s);
  waitForLog();
  letPass(3200ms);
  EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("full up")));
}

TEST_F(StatusNotifierMenuBarTest, AbsentBusIsLoggedAndNothingWaitsForIt) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  startMenuBar(3s);
  waitForLog();
  menuBar_->setIcon(icon(Color::systemRed), "On a call");
  menuBar_->setRows({});
  letPass(3200ms);
  EXPECT_THAT(log_.lines, ElementsAre(AllOf(HasSubstr("no session bus"),
                                            HasSubstr("works on without its icon"))));
}

TEST_F(StatusNotifierMenuBarTest, UnsetBusIsLookedForInTheRuntimeFolderOnly) {
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  startMenuBar();
  waitForLog();
  EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("no session bus")));
}

TEST_F(StatusNotifierMenuBarTest, BusThatDiesIsLoggedAndOneThatComesBackIsFound) {
  start();
  session_.bus().kill();
  waitForLog();
  EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("no session bus")));
  menuBar_->setIcon(icon(Color::systemRed), "On a call");
  std::filesystem::remove(session_.folder() / "bus" / "session");
  const auto bus = session_.start(
      "second-bus.log", {"dbus-daemon", "--nofork", "--nopidfile", "--print-address",
                         "--config-file=" + (session_.folder() / "bus/session.conf").string()});
  // It prints its address when it listens.
  bus->waitUntilReady(
      [&] { return std::filesystem::file_size(session_.folder() / "second-bus.log") > 0; },
      "a bus");
  watcher_.reset();
  startWatcher();
  // As the program's own changes do, every now and then.
  waitUntil(
      [&] {
        menuBar_->setRows({});
        return !watcher_->items().empty();
      },
      patience, "the item to register again");
  EXPECT_THAT(log_.lines, SizeIs(1));
}

TEST_F(StatusNotifierMenuBarTest, FrozenBusKeepsNobodyWaiting) {
  session_.bus().freeze();
  const auto begin = Clock::now();
  startMenuBar(100ms);
  EXPECT_LT(Clock::now() - begin, patience);
  waitForLog();
  EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("does not answer")));
  const auto end = Clock::now();
  menuBar_.reset();
  sessionBus_.reset();
  EXPECT_LT(Clock::now() - end, patience);
  session_.bus().thaw();
}

TEST_F(StatusNotifierMenuBarTest, BusThatFreezesLaterKeepsNobodyWaiting) {
  start();
  session_.bus().freeze();
  const auto begin = Clock::now();
  // More than a socket holds.
  const std::string filling(4000, 'x');
  for (int i = 0; i < 200; ++i)
    menuBar_->setRows({{.kind = MenuRow::Kind::text, .text = filling + std::to_string(i)}});
  menuBar_.reset();
  sessionBus_.reset();
  // Waiting for such a bus would have no end.
  EXPECT_LT(Clock::now() - begin, 2 * patience);
  session_.bus().thaw();
}

TEST_F(StatusNotifierMenuBarTest, SendsNothingAndSleepsWhileNothingChanges) {
  start();
  letPass(100ms);
  client_->takeSignals();
  rusage before{}, after{};
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  g_timeout_add_once(
      500, [](gpointer data) { g_main_loop_quit(static_cast<GMainLoop*>(data)); }, loop);
  getrusage(RUSAGE_THREAD, &before);
  g_main_loop_run(loop);
  getrusage(RUSAGE_THREAD, &after);
  g_main_loop_unref(loop);
  EXPECT_LE(after.ru_nvcsw - before.ru_nvcsw, 5);
  EXPECT_THAT(client_->takeSignals(), IsEmpty());
}

/// The desktop portal's settings, as far as they concern us.
class Portal {
 public:
  Portal(const std::string& busAddress, GVariant* answer)
      : bus_(busAddress), answer_(g_variant_ref_sink(answer)) {
    static const GDBusInterfaceVTable vtable{
        [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
           GDBusMethodInvocation* invocation, gpointer self) {
          g_dbus_method_invocation_return_value(
              invocation, g_variant_new("(v)", static_cast<Portal*>(self)->answer_));
        },
        nullptr,
        nullptr,
        {}};
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(
        "<node><interface name='org.freedesktop.portal.Settings'><method name='Read'>"
        "<arg type='s' direction='in'/><arg type='s' direction='in'/>"
        "<arg type='v' direction='out'/></method></interface></node>",
        nullptr);
    object_ =
        g_dbus_connection_register_object(bus_.get(), "/org/freedesktop/portal/desktop",
                                          node->interfaces[0], &vtable, this, nullptr, nullptr);
    g_dbus_node_info_unref(node);
    bus_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
              "RequestName", g_variant_new("(su)", "org.freedesktop.portal.Desktop", 0));
  }
  ~Portal() {
    g_dbus_connection_unregister_object(bus_.get(), object_);
    g_variant_unref(answer_);
  }
  Portal(const Portal&) = delete;
  Portal& operator=(const Portal&) = delete;

  void change(const char* space, const char* key, GVariant* value) {
    g_dbus_connection_emit_signal(bus_.get(), nullptr, "/org/freedesktop/portal/desktop",
                                  "org.freedesktop.portal.Settings", "SettingChanged",
                                  g_variant_new("(ssv)", space, key, value), nullptr);
  }

 private:
  rehearsal::BusConnection bus_;
  GVariant* answer_;
  guint object_ = 0;
};

class ColorSchemeSettingTest : public PanelFixture {
 protected:
  static constexpr const char* appearance = "org.freedesktop.appearance";

  /// Whether the icon comes to be the one for such a panel.
  bool iconBecomes(PanelTone tone) {
    const IconPixmap wanted = IconPixmap::render(icon(), 16, tone);
    return rehearsal::holdsWithin(
        [&] {
          const auto answer = ofItem("IconPixmap");
          GVariant* bytes = nullptr;
          g_variant_get_child(answer.value.get(), 0, "(ii@ay)", nullptr, nullptr, &bytes);
          gsize count = 0;
          const auto* first =
              static_cast<const std::uint8_t*>(g_variant_get_fixed_array(bytes, &count, 1));
          const bool same = std::vector(first, first + count) == wanted.bytes;
          g_variant_unref(bytes);
          return same;
        },
        patience);
  }
};

TEST_F(ColorSchemeSettingTest, PortalThatIsThereIsAsked) {
  // The older method wraps its answer twice.
  const Portal portal(session_.busAddress(), g_variant_new_variant(g_variant_new_uint32(2)));
  start();
  EXPECT_TRUE(iconBecomes(PanelTone::light));
}

TEST_F(ColorSchemeSettingTest, PortalThatComesLaterIsAskedAndItsChangesAreFollowed) {
  start();
  EXPECT_TRUE(iconBecomes(PanelTone::unknown));
  Portal portal(session_.busAddress(), g_variant_new_uint32(1));
  EXPECT_TRUE(iconBecomes(PanelTone::dark));
  client_->takeSignals();
  portal.change(appearance, "color-scheme", g_variant_new_uint32(2));
  EXPECT_TRUE(iconBecomes(PanelTone::light));
  EXPECT_THAT(client_->takeSignals(), ElementsAre("NewIcon"));
  portal.change(appearance, "color-scheme", g_variant_new_uint32(7));
  EXPECT_TRUE(iconBecomes(PanelTone::unknown));
}

TEST_F(ColorSchemeSettingTest, WhatIsNoColourSchemeIsIgnored) {
  Portal portal(session_.busAddress(), g_variant_new_string("dark"));
  start();
  portal.change(appearance, "accent-color", g_variant_new_uint32(1));
  portal.change("org.gnome.desktop", "color-scheme", g_variant_new_uint32(1));
  portal.change(appearance, "color-scheme", g_variant_new_string("light"));
  letPass(100ms);
  EXPECT_TRUE(iconBecomes(PanelTone::unknown));
  EXPECT_THAT(client_->takeSignals(), IsEmpty());
}

TEST_F(ColorSchemeSettingTest, TintedIconIsNotSentAnew) {
  Portal portal(session_.busAddress(), g_variant_new_uint32(1));
  start();
  ASSERT_TRUE(iconBecomes(PanelTone::dark));
  menuBar_->setIcon(icon(Color::systemGreen), "Not on a call");
  client_->takeSignals();
  portal.change(appearance, "color-scheme", g_variant_new_uint32(2));
  letPass(100ms);
  EXPECT_THAT(client_->takeSignals(), IsEmpty());
  menuBar_->setIcon(icon(), "Not on a call");
  EXPECT_TRUE(iconBecomes(PanelTone::light));
}

TEST_F(ColorSchemeSettingTest, GnomesBarIsTakenForDark) {
  setenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME", 1);
  start();
  EXPECT_TRUE(iconBecomes(PanelTone::dark));
  unsetenv("XDG_CURRENT_DESKTOP");
}

}  // namespace
}  // namespace hushbox
