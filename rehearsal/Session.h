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

/// A login session that nobody else sees: home and runtime folders, a session bus, and on wish a
/// display, all in one scratch folder.
///
/// The session bus starts nothing by itself except the accessibility bus (and what
/// allowActivation() adds), so "no notification daemon is there" stays true until a test starts
/// one. Several sessions may follow one another in a process. At the end everything that carries
/// this session's environment is ended, grandchildren too, and the folder is removed.
class Session {
 public:
  struct Options {
    bool display = false;    ///< Also an X display with a window manager.
    bool systemBus = false;  ///< Also a system bus; else there is none to be reached.
  };

  /// Throws DeskError when dbus-daemon or the display cannot be started.
  Session() : Session(Options{}) {}
  explicit Session(const Options& options);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// What a program needs to live in this session: HOME, XDG_*, DBUS_SESSION_BUS_ADDRESS,
  /// PULSE_SERVER, DISPLAY, ... and of the surroundings only PATH, language and sanitizer options.
  const Environment& environment() const { return environment_; }

  /// Gives this process the session's variables and takes away those that would lead out of it
  /// (AT_SPI_BUS_ADDRESS, WAYLAND_DISPLAY, ...). Undone at the end of the session.
  ///
  /// GLib reads the home and XDG folders once per process: g_get_user_config_dir() and its like
  /// keep the answer of the first session that they were asked in.
  void applyToThisProcess();

  const std::filesystem::path& folder() const { return scratch_.path(); }
  std::filesystem::path home() const { return folder() / "home"; }
  std::filesystem::path runtimeFolder() const { return folder() / "run"; }
  std::string busAddress() const { return environment_.at("DBUS_SESSION_BUS_ADDRESS"); }
  std::string systemBusAddress() const { return environment_.at("DBUS_SYSTEM_BUS_ADDRESS"); }
  ServerProcess& bus() { return *bus_; }

  bool hasDisplay() const { return display_ != nullptr; }
  /// Throws DeskError in a session without one.
  Display& display() const;

  /// Starts a program in this session, its output in a log file of that name; descriptors as in
  /// ServerProcess::Launch.
  std::unique_ptr<ServerProcess> start(const std::string& logName, std::vector<std::string> command,
                                       std::vector<std::pair<int, int>> descriptors = {}) const;

  /// Lets the session bus start the service of that name on demand, as an installed desktop would.
  void allowActivation(const std::string& serviceName);

  /// The processes alive that were started in this session, directly or not.
  std::vector<pid_t> processes() const;

 private:
  void makeEnvironment();
  void startBus();
  void startSystemBus();
  void endStragglers() const;

  ScratchFolder scratch_;
  Environment environment_;
  std::unique_ptr<Display> display_;
  std::unique_ptr<ServerProcess> bus_;
  std::unique_ptr<ServerProcess> systemBus_;
  mutable std::vector<pid_t> started_;
  std::vector<std::pair<std::string, std::optional<std::string>>> replaced_;
};

}  // namespace hushbox::rehearsal
