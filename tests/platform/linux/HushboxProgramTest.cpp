// The program itself, as installed, in a session of its own: how it ends, its autostart entry, and
// how it copes with child processes that misbehave.

#include <gio/gdesktopappinfo.h>
#include <gio/gunixsocketaddress.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/linux/processes/SpawnedChildProcessFactory.h"
#include "rehearsal/Display.h"
#include "rehearsal/HushboxProcess.h"
#include "rehearsal/ItemMenu.h"
#include "rehearsal/NotificationMonitor.h"
#include "rehearsal/ProcessFigures.h"
#include "tests/platform/linux/fixtures/NotificationDaemonMock.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"
#include "tests/platform/linux/fixtures/Sanitized.h"

namespace hushbox {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using rehearsal::holdsWithin;
using rehearsal::ItemMenu;
using rehearsal::letPass;
using rehearsal::ProcessFigures;
using rehearsal::serverTimeout;
using rehearsal::waitUntil;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using Clock = std::chrono::steady_clock;

class HushboxProgramTest : public PanelFixture {
 protected:
  static constexpr const char* launch = "Launch at login";

  HushboxProgramTest() : bus_(session_.busAddress()) {
    watcher_ = std::make_unique<Watcher>(session_.busAddress());
  }

  void startProgram(const fs::path& program = HUSHBOX_PROGRAM) {
    program_.emplace(session_, program);
    watcher_->waitForItem();
    name_ = watcher_->items().back();
    client_->listenTo(name_);
  }

  ItemMenu rows() const { return {bus_, name_}; }

  fs::path entry() const {
    return session_.home() / ".config" / "autostart" / "org.hushbox.Hushbox.desktop";
  }

  rehearsal::BusConnection bus_;
  std::optional<rehearsal::HushboxProcess> program_;
};

class HushboxProgramSignalTest : public HushboxProgramTest,
                                 public testing::WithParamInterface<int> {};

TEST_P(HushboxProgramSignalTest, EndsItCleanlyWithStatusZero) {
  startProgram();
  EXPECT_EQ(program_->quit(GetParam()), 0);
}

INSTANTIATE_TEST_SUITE_P(SessionEnd, HushboxProgramSignalTest,
                         testing::Values(SIGTERM, SIGINT, SIGHUP));

TEST_F(HushboxProgramTest, QuitRowEndsItWithStatusZero) {
  startProgram();
  rows().choose("Quit Hushbox");
  EXPECT_EQ(program_->waitForExit(), 0);
  EXPECT_FALSE(bus_.hasOwner(name_));
}

TEST_F(HushboxProgramTest, SecondStartSaysSoAndExitsWithZero) {
  startProgram();
  const auto second = session_.start("second.log", {HUSHBOX_PROGRAM});
  EXPECT_EQ(second->waitForExit(), 0);
  std::ifstream log(session_.folder() / "second.log");
  const std::string said(std::istreambuf_iterator<char>(log), {});
  EXPECT_THAT(said, HasSubstr("running in this session already"));
  letPass(100ms);
  EXPECT_THAT(watcher_->items(), ElementsAre(name_));
  EXPECT_EQ(rows().row("Quit Hushbox").enabled, true);
}

TEST_F(HushboxProgramTest, SendsThePanelNothingWhileNothingChanges) {
  startProgram();
  // After the first battery reading and the first polls.
  letPass(1500ms);
  client_->takeSignals();
  letPass(3s);
  EXPECT_THAT(client_->takeSignals(), IsEmpty());
}

TEST_F(HushboxProgramTest, EndsInTimeOnABusThatDoesNotRead) {
  startProgram();
  session_.bus().freeze();
  const auto begin = Clock::now();
  EXPECT_EQ(program_->quit(), 0);
  // One second for the bus, and as much again for a busy machine.
  EXPECT_LT(Clock::now() - begin, 2s);
  session_.bus().thaw();
}

TEST_F(HushboxProgramTest, GrantAccessibilitySaysThatTheBrowserMustBeRestarted) {
  const NotificationDaemonMock daemon(session_, "body");
  const rehearsal::NotificationMonitor monitor(session_.busAddress());
  startProgram();
  rows().choose("Grant Accessibility…");
  monitor.waitForShown(1);
  // Longer than the accessibility bus takes to start, plus one poll.
  letPass(2s);
  const auto shown = monitor.shown();
  ASSERT_THAT(shown, SizeIs(1));
  EXPECT_EQ(shown[0].title, "Accessibility is switched on");
  EXPECT_EQ(shown[0].body,
            "Close all windows of your browser and start it again, so that Hushbox can find Teams "
            "in it.");
}

/// The program in a session with a display.
class HushboxProgramLogoutTest : public PanelFixture {
 protected:
  HushboxProgramLogoutTest() { watcher_ = std::make_unique<Watcher>(session_.busAddress()); }

  /// `display` is an assignment to an environment variable.
  void expectToEndWith(const std::string& display, const std::function<void()>& close) {
    const auto start = [&](const std::string& log) {
      return session_.start(log, {"env", display, HUSHBOX_PROGRAM});
    };
    // The session bus stays, as a user's bus does after a logout, and with it any name on it.
    const auto first = start("first.log");
    watcher_->waitForItem();
    letPass(300ms);
    EXPECT_TRUE(first->isRunning());
    close();
    EXPECT_EQ(first->waitForExit(), 0);
    const auto second = start("second.log");
    waitUntil([this] { return watcher_->items().size() == 2; }, serverTimeout, "the second start");
    EXPECT_TRUE(second->isRunning());
  }
};

TEST_F(HushboxProgramLogoutTest, EndsWithTheXServerAndCanBeStartedAgain) {
  rehearsal::Display display(session_.environment(), session_.folder());
  expectToEndWith("DISPLAY=" + display.name(), [&] { display.close(); });
}

TEST_F(HushboxProgramLogoutTest, EndsWithTheCompositorAndCanBeStartedAgain) {
  // Hushbox sends a compositor nothing, so a socket will do for one.
  const std::string path = session_.runtimeFolder() / "compositor";
  const ObjectPointer<GSocketAddress> address(g_unix_socket_address_new(path.c_str()));
  const ObjectPointer<GSocketListener> compositor(g_socket_listener_new());
  ASSERT_TRUE(g_socket_listener_add_address(compositor.get(), address.get(), G_SOCKET_TYPE_STREAM,
                                            G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr, nullptr));
  expectToEndWith("WAYLAND_DISPLAY=" + path, [&] { g_socket_listener_close(compositor.get()); });
}

/// The allocator's settings, which the program reads from its environment.
class HushboxProgramAllocatorTest : public HushboxProgramTest {
 protected:
  static std::vector<std::string> settingsOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/environ");
    std::vector<std::string> found;
    for (std::string variable; std::getline(file, variable, '\0');)
      if (variable.starts_with("GLIBC_TUNABLES=")) found.push_back(variable);
    return found;
  }
};

TEST_F(HushboxProgramAllocatorTest, RunsWithoutCachesPerThreadInTheSameProcess) {
  const auto program = session_.start("hushbox.log", {HUSHBOX_PROGRAM});
  watcher_->waitForItem();
  EXPECT_THAT(settingsOf(program->pid()),
              ElementsAre("GLIBC_TUNABLES=glibc.malloc.tcache_count=0"));
  std::string name;
  std::getline(std::ifstream("/proc/" + std::to_string(program->pid()) + "/comm"), name);
  EXPECT_EQ(name, "hushbox");
}

TEST_F(HushboxProgramAllocatorTest, KeepsTheUsersSettings) {
  const std::string settings = "GLIBC_TUNABLES=glibc.malloc.perturb=1";
  const auto program = session_.start("hushbox.log", {"env", settings, HUSHBOX_PROGRAM});
  watcher_->waitForItem();
  EXPECT_THAT(settingsOf(program->pid()), ElementsAre(settings));
}

/// The names that the process has on the bus: one per connection.
class HushboxProgramConnectionTest : public HushboxProgramTest {
 protected:
  std::vector<std::string> connectionsOf(pid_t process) const {
    const auto reply =
        bus_.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "ListNames", nullptr);
    std::vector<std::string> found;
    GVariantIter* names = nullptr;
    g_variant_get(reply.get(), "(as)", &names);
    for (const char* name = nullptr; g_variant_iter_next(names, "&s", &name);)
      if (*name == ':' && bus_.processOf(name) == process) found.emplace_back(name);
    g_variant_iter_free(names);
    return found;
  }
};

TEST_F(HushboxProgramConnectionTest, HasTwoConnectionsToTheSessionBus) {
  // With the settings that a desktop has: those in memory need no connection.
  const auto program =
      session_.start("hushbox.log", {"env", "GSETTINGS_BACKEND=dconf", HUSHBOX_PROGRAM});
  watcher_->waitForItem();
  // After the first battery reading and the first polls.
  letPass(2500ms);
  EXPECT_THAT(connectionsOf(program->pid()), SizeIs(2));
}

TEST_F(HushboxProgramTest, OutlivesTheSessionBusAndIsBackWithIt) {
  // With the settings that a desktop has: their storage uses GLib's shared connection as well.
  const auto program =
      session_.start("hushbox.log", {"env", "GSETTINGS_BACKEND=dconf", HUSHBOX_PROGRAM});
  watcher_->waitForItem();
  session_.restartBus();
  watcher_ = std::make_unique<Watcher>(session_.busAddress());
  watcher_->waitForItem();
  EXPECT_TRUE(program->isRunning());
}

TEST_F(HushboxProgramTest, ToggleWritesAnEntryThatStartsTheSameProgram) {
  startProgram();
  rows().choose(launch);
  waitUntil([&] { return rows().row(launch).on; }, serverTimeout, "the switch");
  SpawnedChildProcessFactory processes{ChildProcessRules{}};
  const auto validator = processes.make();
  validator->setExecutablePath("/usr/bin/desktop-file-validate");
  validator->setArguments({entry()});
  ASSERT_TRUE(validator->launch()) << "desktop-file-validate is not installed.";
  EXPECT_EQ(validator->readDataToEndOfFile(), "");
  EXPECT_EQ(program_->quit(), 0);

  const std::unique_ptr<GDesktopAppInfo, void (*)(gpointer)> info(
      g_desktop_app_info_new_from_filename(entry().c_str()), g_object_unref);
  ASSERT_TRUE(info);
  ASSERT_TRUE(g_app_info_launch(G_APP_INFO(info.get()), nullptr, nullptr, nullptr));
  waitUntil([&] { return watcher_->items().back() != name_; }, serverTimeout,
            "the program's start");
  name_ = watcher_->items().back();
  const int process = bus_.processOf(name_);
  EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(process) + "/exe"),
            fs::canonical(HUSHBOX_PROGRAM));
  EXPECT_TRUE(rows().row(launch).on);
  rows().choose(launch);
  waitUntil([&] { return !rows().row(launch).on; }, serverTimeout, "the switch");
  EXPECT_FALSE(fs::exists(entry()));
  kill(process, SIGTERM);
  waitUntil([&] { return !bus_.hasOwner(name_); }, serverTimeout, "the program's end");
}

TEST_F(HushboxProgramTest, FailedRegistrationRestoresTheToggleSilently) {
  std::ofstream(session_.home() / ".config") << "a file where the folder would be";
  startProgram();
  letPass(1500ms);
  const std::string logged = program_->log();
  client_->takeSignals();
  rows().choose(launch);
  std::vector<std::string> signals;
  holdsWithin([&] { return !(signals = client_->takeSignals()).empty(); }, serverTimeout);
  EXPECT_THAT(signals, ElementsAre(HasSubstr("'toggle-state': <0>")));
  EXPECT_FALSE(rows().row(launch).on);
  EXPECT_EQ(program_->log(), logged);
}

TEST_F(HushboxProgramTest, ItemRegistersWithTheNextWatcher) {
  startProgram();
  watcher_.reset();
  letPass(50ms);
  watcher_ = std::make_unique<Watcher>(session_.busAddress());
  watcher_->waitForItem();
  EXPECT_THAT(watcher_->items(), ElementsAre(name_));
}

/// What another user of the computer could use: sockets, and programs in folders of the PATH.
class HushboxProgramOtherUserTest : public HushboxProgramTest {
 protected:
  /// The sockets of a process, as the kernel numbers them.
  static std::set<std::string> socketsOf(pid_t process) {
    std::set<std::string> sockets;
    for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
      std::error_code closedMeanwhile;
      const std::string target = fs::read_symlink(entry, closedMeanwhile).string();
      if (target.starts_with("socket:[")) sockets.insert(target.substr(8, target.size() - 9));
    }
    return sockets;
  }

  /// The numbers of all UNIX sockets that accept connections.
  static std::set<std::string> listening() {
    std::set<std::string> sockets;
    std::ifstream table("/proc/net/unix");
    std::string line;
    std::getline(table, line);
    while (std::getline(table, line)) {
      std::istringstream fields(line);
      std::string address, references, protocol, flags, type, state, number;
      fields >> address >> references >> protocol >> flags >> type >> state >> number;
      constexpr unsigned long accepts = 1UL << 16;
      if ((std::stoul(flags, nullptr, 16) & accepts) != 0) sockets.insert(number);
    }
    return sockets;
  }
};

TEST_F(HushboxProgramOtherUserTest, DoesNotListenOnAnySocket) {
  startProgram();
  letPass(300ms);
  const auto own = socketsOf(program_->pid());
  const auto all = listening();
  EXPECT_THAT(own, Not(IsEmpty()));
  // That of the session bus, at least.
  EXPECT_THAT(all, Not(IsEmpty()));
  std::vector<std::string> offered;
  std::ranges::set_intersection(own, all, std::back_inserter(offered));
  EXPECT_THAT(offered, IsEmpty());
}

TEST_F(HushboxProgramOtherUserTest, RunsNoProgramFromThePath) {
  const fs::path folder = session_.folder() / "hostile";
  const fs::path sign = session_.folder() / "started";
  fs::create_directory(folder);
  for (const char* name : {"hushbox-power-report", "pmset", "dbus-launch", "pulseaudio", "sh",
                           "at-spi-bus-launcher", "gsettings", "xdg-open"}) {
    std::ofstream(folder / name) << "#!/bin/bash\necho $0 >>" << sign.string() << '\n';
    fs::permissions(folder / name, fs::perms::owner_all);
  }
  const auto program =
      session_.start("path.log", {"env", "PATH=" + folder.string(), HUSHBOX_PROGRAM});
  watcher_->waitForItem();
  name_ = watcher_->items().back();
  rows().choose(launch);
  // The battery has been read and polls have run.
  letPass(1500ms);
  EXPECT_FALSE(fs::exists(sign));
  program->stop();
}

/// The program with a script as its power report.
class HushboxProgramChildTest : public HushboxProgramTest {
 protected:
  void startProgramWithChild(const std::string& body) {
    const fs::path folder = session_.folder() / "installed";
    fs::create_directories(folder / "power-report");
    fs::copy_file(HUSHBOX_PROGRAM, folder / "hushbox");
    const fs::path child = folder / "power-report" / "hushbox-power-report";
    std::ofstream(child) << "#!/bin/sh\necho $$ >" << note_.string() << '\n' << body << '\n';
    fs::permissions(child, fs::perms::owner_all);
    startProgram(folder / "hushbox");
    waitUntil([this] { return this->child() != 0; }, serverTimeout, "the child");
  }

  pid_t child() const {
    pid_t process = 0;
    std::ifstream(note_) >> process;
    return process;
  }
  bool childIsGone() const { return kill(child(), 0) != 0; }

  bool hasBatteryRow() const {
    return std::ranges::any_of(
        rows().rows(), [](const ItemMenu::Row& row) { return row.text.starts_with("Battery"); });
  }

  /// The longest time that the program takes to reply to the panel.
  Clock::duration slowestAnswer() {
    Clock::duration slowest{};
    for (int i = 0; i < 20; ++i) {
      const auto begin = Clock::now();
      EXPECT_EQ(ofItem("Id").text(), "'hushbox'");
      slowest = std::max(slowest, Clock::now() - begin);
    }
    return slowest;
  }

  /// The memory that the program has written, once that has not changed for a while.
  long steadyKibibytes() const {
    const auto now = [this] { return ProcessFigures::of(program_->pid()).writtenKibibytes; };
    long kibibytes = now();
    for (int unchanged = 0; unchanged < 6; ++unchanged) {
      letPass(50ms);
      if (std::exchange(kibibytes, now()) != kibibytes) unchanged = 0;
    }
    return kibibytes;
  }

  /// How many descriptors of the program the kernel describes with that text.
  std::ptrdiff_t descriptorsOf(const std::string& text) const {
    const fs::path folder = fs::path("/proc") / std::to_string(program_->pid()) / "fd";
    return std::ranges::count_if(fs::directory_iterator(folder), [&](const fs::path& entry) {
      std::error_code closedMeanwhile;
      return fs::read_symlink(entry, closedMeanwhile).string().find(text) != std::string::npos;
    });
  }

  const fs::path note_ = session_.folder() / "child";
};

TEST_F(HushboxProgramChildTest, BatteryRowShowsTheOutputOfTheChild) {
  startProgramWithChild("printf ' -Jabra Speak2 75\\t42%%; charging; present: true\\n'");
  waitUntil([this] { return hasBatteryRow(); }, serverTimeout, "the row");
  EXPECT_EQ(rows().rows()[1].text, "Battery: 42% (charging)");
}

TEST_F(HushboxProgramChildTest, ChildThatHangsDelaysNeitherTheProgramNorItsExit) {
  startProgramWithChild("exec sleep 600");
  EXPECT_LT(slowestAnswer(), 5s);
  ASSERT_FALSE(childIsGone());
  const auto begin = Clock::now();
  EXPECT_EQ(program_->quit(), 0);
  // Less than the ten seconds that a child may take.
  EXPECT_LT(Clock::now() - begin, 8s);
  EXPECT_TRUE(holdsWithin([&] { return childIsGone(); }, serverTimeout));
}

TEST_F(HushboxProgramChildTest, ChildThatFloodsIsKilled) {
  startProgramWithChild("exec yes ' -Jabra Speak2 75\t42%; charging'");
  EXPECT_LT(slowestAnswer(), 5s);
  // Because of its output, well before the timeout.
  EXPECT_TRUE(holdsWithin([&] { return childIsGone(); }, 8s));
  EXPECT_FALSE(hasBatteryRow());
  EXPECT_EQ(program_->quit(), 0);
}

TEST_F(HushboxProgramChildTest, FloodOf256MebibytesLeavesNothingBehind) {
  const fs::path go = session_.folder() / "go";
  const fs::path written = session_.folder() / "written";
  startProgramWithChild("until [ -e " + go.string() +
                        " ]; do sleep 0.01; done\n"
                        "head -c 268435456 /dev/zero && echo >" +
                        written.string());
  const long before = steadyKibibytes();
  const std::string pipe = fs::read_symlink("/proc/" + std::to_string(child()) + "/fd/1");
  EXPECT_EQ(descriptorsOf(pipe), 1);
  std::ofstream{go};
  EXPECT_TRUE(holdsWithin([&] { return childIsGone(); }, 8s));
  EXPECT_FALSE(fs::exists(written));
  EXPECT_TRUE(holdsWithin([&] { return descriptorsOf(pipe) + descriptorsOf("pidfd") == 0; },
                          serverTimeout));
  if (!isSanitized) {
    // It is about 70 KiB more: the output that the program held was 1 MiB.
    EXPECT_LT(steadyKibibytes(), before + 256);
  }
  EXPECT_EQ(program_->quit(), 0);
}

}  // namespace
}  // namespace hushbox
