#include "platform/linux/menubar/StatusNotifierMenuBar.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>

#include "tests/platform/linux/fixtures/PanelFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::letPass;
using rehearsal::serverTimeout;
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
    waitUntil([&] { return !log_.lines.empty(); }, serverTimeout, "a line in the log");
  }
};

TEST_F(StatusNotifierMenuBarTest, RegistersWithARunningWatcher) {
  startWatcher();
  startMenuBar();
  watcher_->waitForItem();
  EXPECT_THAT(watcher_->items(), SizeIs(1));
  EXPECT_THAT(watcher_->items().front(), testing::StartsWith(":"));
}

TEST_F(StatusNotifierMenuBarTest, RegistersWithAWatcherThatStartsLater) {
  startMenuBar();
  letPass(100ms);
  startWatcher();
  watcher_->waitForItem();
}

TEST_F(StatusNotifierMenuBarTest, RegistersAgainWithEachNewWatcher) {
  startMenuBar();
  for (int i = 0; i < 3; ++i) {
    startWatcher();
    watcher_->waitForItem();
    watcher_.reset();
    letPass(20ms);
  }
  EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(StatusNotifierMenuBarTest, RegistersOnceItHasAnIcon) {
  startWatcher();
  menuBar_ = std::make_unique<StatusNotifierMenuBar>(*sessionBus_, log_);
  menuBar_->setRows({});
  letPass(100ms);
  EXPECT_THAT(watcher_->items(), IsEmpty());
  menuBar_->setIcon(icon(), "");
  watcher_->waitForItem();
}

TEST_F(StatusNotifierMenuBarTest, LogsAMissingWatcherOnceAfterTheTimeout) {
  const auto begin = Clock::now();
  startMenuBar(150ms);
  waitForLog();
  EXPECT_GE(Clock::now() - begin, 150ms);
  menuBar_->setIcon(icon(Color::systemRed), "On a call");
  letPass(400ms);
  EXPECT_THAT(log_.lines, ElementsAre(AllOf(HasSubstr("StatusNotifierWatcher"),
                                            HasSubstr("runs without its icon"))));
  startWatcher();
  watcher_->waitForItem();
}

TEST_F(StatusNotifierMenuBarTest, LogsNothingWhenAWatcherAccepts) {
  startWatcher();
  startMenuBar(3s);
  watcher_->waitForItem();
  letPass(3200ms);
  EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(StatusNotifierMenuBarTest, LogsAWatcherThatExitsBeforeTheTimeout) {
  startWatcher();
  startMenuBar(500ms);
  watcher_->waitForItem();
  letPass(100ms);
  watcher_.reset();
  waitForLog();
  EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("StatusNotifierWatcher")));
}

TEST_F(StatusNotifierMenuBarTest, LogsAWatcherThatRefuses) {
  startWatcher(true);
  startMenuBar(3s);
  waitForLog();
  letPass(3200ms);
  EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("full up")));
}

TEST_F(StatusNotifierMenuBarTest, LogsAMissingBusOnce) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  startMenuBar(3s);
  waitForLog();
  menuBar_->setIcon(icon(Color::systemRed), "On a call");
  menuBar_->setRows({});
  letPass(3200ms);
  EXPECT_THAT(log_.lines,
              ElementsAre(AllOf(HasSubstr("no session bus"), HasSubstr("runs without its icon"))));
}

TEST_F(StatusNotifierMenuBarTest, WithoutAnAddressLooksOnlyInTheRuntimeFolder) {
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  startMenuBar();
  waitForLog();
  EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("no session bus")));
}

TEST_F(StatusNotifierMenuBarTest, LogsABusThatExitsAndFindsTheNextOne) {
  start();
  session_.bus().kill();
  waitForLog();
  EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("no session bus")));
  menuBar_->setIcon(icon(Color::systemRed), "On a call");
  std::filesystem::remove(session_.folder() / "bus" / "session");
  const auto bus = session_.start(
      "second-bus.log", {"dbus-daemon", "--nofork", "--nopidfile", "--print-address",
                         "--config-file=" + (session_.folder() / "bus/session.conf").string()});
  // It prints its address once it listens.
  bus->waitUntilReady(
      [&] { return std::filesystem::file_size(session_.folder() / "second-bus.log") > 0; },
      "a bus");
  watcher_.reset();
  startWatcher();
  // Changes make the program look for a bus again.
  waitUntil(
      [&] {
        menuBar_->setRows({});
        return !watcher_->items().empty();
      },
      serverTimeout, "the item to register again");
  EXPECT_THAT(log_.lines, SizeIs(1));
}

TEST_F(StatusNotifierMenuBarTest, FrozenBusBlocksNothing) {
  session_.bus().freeze();
  const auto begin = Clock::now();
  startMenuBar(100ms);
  EXPECT_LT(Clock::now() - begin, serverTimeout);
  waitForLog();
  EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("does not reply")));
  const auto end = Clock::now();
  menuBar_.reset();
  sessionBus_.reset();
  EXPECT_LT(Clock::now() - end, serverTimeout);
  session_.bus().thaw();
}

TEST_F(StatusNotifierMenuBarTest, BusThatStopsReadingDelaysTheEndByOneTimeoutAtMost) {
  start();
  session_.bus().freeze();
  // More than the socket's buffer holds.
  const std::string filling(4000, 'x');
  for (int i = 0; i < 200; ++i)
    menuBar_->setRows({{.kind = MenuRow::Kind::text, .text = filling + std::to_string(i)}});
  const auto begin = Clock::now();
  menuBar_.reset();
  sessionBus_.reset();
  EXPECT_LT(Clock::now() - begin, SessionBusConnection::closeTimeout + 500ms);
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

}  // namespace
}  // namespace hushbox
