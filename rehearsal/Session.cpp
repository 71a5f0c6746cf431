#include "rehearsal/Session.h"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "rehearsal/DeskError.h"
#include "rehearsal/LinePipe.h"

extern char** environ;

namespace hushbox::rehearsal {

namespace {

constexpr int addressDescriptor = 3;
/// Set to the session's folder in the environment of everything that is started in a session. It
/// identifies grandchildren that have left their process group.
constexpr const char* marker = "HUSHBOX_REHEARSAL";

constexpr std::array inherited{"PATH",         "LANG",         "LANGUAGE",      "LC_ALL",
                               "TZ",           "USER",         "LOGNAME",       "LD_LIBRARY_PATH",
                               "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"};

/// Variables that refer to another session.
constexpr std::array foreignVariables{
    "AT_SPI_BUS_ADDRESS", "WAYLAND_DISPLAY",      "WAYLAND_SOCKET",     "DISPLAY",
    "XAUTHORITY",         "NO_AT_BRIDGE",         "PULSE_SOURCE",       "PULSE_SINK",
    "PULSE_COOKIE",       "PULSE_STATE_PATH",     "PULSE_RUNTIME_PATH", "PULSE_CLIENTCONFIG",
    "PIPEWIRE_REMOTE",    "PIPEWIRE_RUNTIME_DIR", "SESSION_MANAGER",    "DESKTOP_STARTUP_ID",
    "JOURNAL_STREAM",     "XDG_SESSION_ID"};

constexpr const char* serviceFolder = "/usr/share/dbus-1/services";

/// Configures a bus that allows everything and activates only the services in `services`.
void writeBusConfiguration(const std::filesystem::path& file, const std::string& type,
                           const std::string& socket, const std::filesystem::path& services) {
  std::ofstream(file) << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration "
                         "1.0//EN\" "
                         "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                      << "<busconfig><type>" << type << "</type><listen>unix:path=" << socket
                      << "</listen><servicedir>" << services.string() << "</servicedir>"
                      << "<policy context=\"default\"><allow user=\"*\"/><allow own=\"*\"/>"
                      << "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                      << "<allow eavesdrop=\"true\"/></policy></busconfig>\n";
}

std::unique_ptr<ServerProcess> startBusDaemon(const std::filesystem::path& configuration,
                                              const Environment& environment,
                                              const std::filesystem::path& log) {
  LinePipe address;
  auto bus = std::make_unique<ServerProcess>(
      ServerProcess::Launch{{"dbus-daemon", "--config-file=" + configuration.string(), "--nofork",
                             "--nopidfile", "--print-address=" + std::to_string(addressDescriptor)},
                            environment,
                            log,
                            {{address.writeEnd(), addressDescriptor}}});
  bus->waitUntilReady([&] { return address.hasLine(); }, "a message bus");
  return bus;
}

/// Maps each running process to its parent.
std::map<pid_t, pid_t> parentProcesses() {
  std::map<pid_t, pid_t> result;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename().string();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    std::ifstream file(entry.path() / "stat");
    std::string line;
    std::getline(file, line);
    // "7 (any name) S 1 ...": the name itself may contain spaces and brackets.
    const std::size_t nameEnd = line.rfind(") ");
    if (nameEnd == std::string::npos) continue;
    char state = 'Z';
    pid_t parent = 0;
    std::istringstream(line.substr(nameEnd + 2)) >> state >> parent;
    if (state != 'Z') result[std::stoi(name)] = parent;
  }
  return result;
}

bool hasVariable(pid_t process, const std::string& variable) {
  std::ifstream file("/proc/" + std::to_string(process) + "/environ", std::ios::binary);
  for (std::string assignment; std::getline(file, assignment, '\0');) {
    if (assignment == variable) return true;
  }
  return false;
}

}  // namespace

Session::Session(const Options& options) {
  makeEnvironment();
  if (options.display) {
    display_ = std::make_unique<Display>(environment_, folder());
    environment_["DISPLAY"] = display_->name();
  }
  startBus();
  if (options.systemBus) startSystemBus();
}

Session::~Session() {
  // Stop the buses first: most programs that they started exit with them.
  systemBus_.reset();
  bus_.reset();
  display_.reset();
  killRemaining();
  for (const auto& [name, value] : replaced_) {
    if (value) {
      setenv(name.c_str(), value->c_str(), 1);
    } else {
      unsetenv(name.c_str());
    }
  }
}

void Session::makeEnvironment() {
  for (const char* name : inherited) {
    if (const char* value = std::getenv(name)) environment_[name] = value;
  }
  const std::string home = scratch_.makeFolder("home").string();
  const std::string run = scratch_.makeFolder("run").string();
  const std::string bus = scratch_.makeFolder("bus").string();
  environment_["HOME"] = home;
  environment_["TMPDIR"] = scratch_.makeFolder("tmp").string();
  environment_["XDG_RUNTIME_DIR"] = run;
  environment_["XDG_CONFIG_HOME"] = home + "/.config";
  environment_["XDG_DATA_HOME"] = home + "/.local/share";
  environment_["XDG_STATE_HOME"] = home + "/.local/state";
  environment_["XDG_CACHE_HOME"] = home + "/.cache";
  environment_["XDG_SESSION_TYPE"] = "x11";
  environment_["GSETTINGS_BACKEND"] = "memory";
  environment_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + bus + "/session";
  environment_["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + bus + "/system";
  environment_["PULSE_SERVER"] = "unix:" + run + "/pulse/native";
  environment_[marker] = folder().string();
}

void Session::startBus() {
  writeBusConfiguration(sessionBusConfiguration(), "session",
                        (folder() / "bus" / "session").string(),
                        scratch_.makeFolder("bus/services"));
  if (std::filesystem::exists(std::string(serviceFolder) + "/org.a11y.Bus.service")) {
    allowActivation("org.a11y.Bus");
  }
  startSessionBusDaemon();
}

std::filesystem::path Session::sessionBusConfiguration() const {
  return folder() / "bus" / "session.conf";
}

void Session::startSessionBusDaemon() {
  bus_ = startBusDaemon(sessionBusConfiguration(), environment_, folder() / "session-bus.log");
}

void Session::restartBus() {
  bus_->kill();
  startSessionBusDaemon();
}

void Session::startSystemBus() {
  const std::filesystem::path configuration = folder() / "bus" / "system.conf";
  writeBusConfiguration(configuration, "system", (folder() / "bus" / "system").string(),
                        scratch_.makeFolder("bus/system-services"));
  systemBus_ = startBusDaemon(configuration, environment_, folder() / "system-bus.log");
}

void Session::allowActivation(const std::string& serviceName) {
  for (const auto& entry : std::filesystem::directory_iterator(serviceFolder)) {
    std::ifstream file(entry.path());
    for (std::string line; std::getline(file, line);) {
      if (line != "Name=" + serviceName) continue;
      std::filesystem::copy_file(entry.path(),
                                 folder() / "bus" / "services" / (serviceName + ".service"));
      return;
    }
  }
  throw DeskError(serviceName + " is not installed: run script/bootstrap");
}

void Session::applyToThisProcess() {
  const auto keep = [this](const char* name) {
    const char* value = std::getenv(name);
    replaced_.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
  };
  for (const char* name : foreignVariables) {
    keep(name);
    unsetenv(name);
  }
  for (const auto& [name, value] : environment_) {
    keep(name.c_str());
    setenv(name.c_str(), value.c_str(), 1);
  }
}

Display& Session::display() const {
  if (!display_) throw DeskError("this session has no display");
  return *display_;
}

std::unique_ptr<ServerProcess> Session::start(const std::string& logName,
                                              std::vector<std::string> command,
                                              std::vector<std::pair<int, int>> descriptors) const {
  auto process = std::make_unique<ServerProcess>(ServerProcess::Launch{
      std::move(command), environment_, folder() / logName, std::move(descriptors)});
  started_.push_back(process->pid());
  return process;
}

std::vector<pid_t> Session::processes() const {
  const std::string variable = std::string(marker) + "=" + folder().string();
  const std::map<pid_t, pid_t> parents = parentProcesses();
  std::set<pid_t> found;
  for (const auto& [process, parent] : parents) {
    if (process != getpid() && hasVariable(process, variable)) found.insert(process);
  }
  // Browsers overwrite their environment, and their children's, with a process title.
  for (const pid_t process : started_) {
    const auto alive = parents.find(process);
    if (alive != parents.end() && alive->second == getpid()) found.insert(process);
  }
  for (std::size_t before = 0; before != found.size();) {
    before = found.size();
    for (const auto& [process, parent] : parents) {
      if (found.contains(parent)) found.insert(process);
    }
  }
  return {found.begin(), found.end()};
}

void Session::killRemaining() const {
  for (const pid_t process : processes()) ::kill(process, SIGKILL);
  holdsWithin([this] { return processes().empty(); }, Milliseconds{2000});
}

}  // namespace hushbox::rehearsal
