#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "rehearsal/Display.h"
#include "rehearsal/Environment.h"
#include "rehearsal/ScratchFolder.h"
#include "rehearsal/ServerProcess.h"

namespace hushbox::rehearsal {

/// A private login session: home and runtime folders, a session bus and optionally a display and a
/// system bus, all in one scratch folder.
///
/// The session bus activates only the accessibility bus and the services added with
/// allowActivation(), so there is no notification daemon until a test starts one. A process can
/// have several sessions one after another. Destroying a session kills every process that has the
/// session's environment, including grandchildren, and removes the folder.
class Session {
 public:
  struct Options {
    bool display = false;    ///< Start an X display with a window manager.
    bool systemBus = false;  ///< Start a system bus; without it no system bus can be reached.
  };

  /// Throws DeskError if dbus-daemon or the display cannot be started.
  Session() : Session(Options{}) {}
  explicit Session(const Options& options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// The whole environment of a program in this session: HOME, XDG_*, DBUS_SESSION_BUS_ADDRESS,
  /// PULSE_SERVER, DISPLAY and so on. Only PATH, the language and the sanitizer options come from
  /// this process's own environment.
  const Environment& environment() const { return environment_; }

  /// Sets the session's variables in this process and unsets those that refer to another session
  /// (AT_SPI_BUS_ADDRESS, WAYLAND_DISPLAY and so on). Destroying the session restores them.
  ///
  /// GLib reads the home and XDG folders once per process: g_get_user_config_dir() and similar
  /// functions keep returning the folders of the first session in which they were called.
  void applyToThisProcess();

  const std::filesystem::path& folder() const { return scratch_.path(); }
  std::filesystem::path home() const { return folder() / "home"; }
  std::filesystem::path runtimeFolder() const { return folder() / "run"; }
  std::string busAddress() const { return environment_.at("DBUS_SESSION_BUS_ADDRESS"); }
  std::string systemBusAddress() const { return environment_.at("DBUS_SYSTEM_BUS_ADDRESS"); }
  ServerProcess& bus() { return *bus_; }
  /// Kills the session bus, as a crash would, and starts one at the same address.
  void restartBus();

  bool hasDisplay() const { return display_ != nullptr; }
  /// Throws DeskError if this session has no display.
  Display& display() const;

  /// Starts a program in this session. Its output goes to the file `logName` in the session's
  /// folder; `descriptors` is as in ServerProcess::Launch.
  std::unique_ptr<ServerProcess> start(const std::string& logName, std::vector<std::string> command,
                                       std::vector<std::pair<int, int>> descriptors = {}) const;

  /// Lets the session bus activate the installed service of that name. Throws DeskError if no such
  /// service is installed.
  void allowActivation(const std::string& serviceName);

  /// The running processes that were started in this session, directly or indirectly.
  std::vector<pid_t> processes() const;

 private:
  void makeEnvironment();
  void startBus();
  std::filesystem::path sessionBusConfiguration() const;
  void startSessionBusDaemon();
  void startSystemBus();
  void killRemaining() const;

  ScratchFolder scratch_;
  Environment environment_;
  std::unique_ptr<Display> display_;
  std::unique_ptr<ServerProcess> bus_;
  std::unique_ptr<ServerProcess> systemBus_;
  mutable std::vector<pid_t> started_;
  std::vector<std::pair<std::string, std::optional<std::string>>> replaced_;
};

}  // namespace hushbox::rehearsal
