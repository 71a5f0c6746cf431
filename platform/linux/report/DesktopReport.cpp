#include "platform/linux/report/DesktopReport.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include "platform/linux/Descriptor.h"
#include "platform/linux/bus/BusDaemonCalls.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "platform/linux/session/AutostartLoginItem.h"
#include "platform/linux/session/JournalLog.h"
#include "support/BundleIdentifier.h"
#include "support/Text.h"

namespace hushbox {
namespace {

constexpr std::chrono::milliseconds replyTimeout{2000};
constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr const char* notifications = "org.freedesktop.Notifications";

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value ? text::escapedForTerminal(value) : "";
}

std::string sessionLine() {
  std::string desktop = variable("XDG_CURRENT_DESKTOP");
  if (desktop.empty()) desktop = "unknown";
  const bool hasWayland = !variable("WAYLAND_DISPLAY").empty();
  const bool hasX = !variable("DISPLAY").empty();
  const char* const display = hasWayland ? (hasX ? "Wayland with X11" : "Wayland")
                              : hasX     ? "X11"
                                         : "no display";
  return "Desktop: " + desktop + ", " + display;
}

/// The program that owns a name on the bus, by its file; nullopt if nothing owns it.
std::optional<std::string> ownerOf(SessionBusConnection& bus, const std::string& name) {
  const BusReply reply = bus.callAndWait(bus_daemon::processOf(name, replyTimeout));
  if (!reply) return std::nullopt;
  guint32 process = 0;
  g_variant_get(reply.value.get(), "(u)", &process);
  std::error_code error;
  const auto path =
      std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/exe", error);
  return path.empty() ? "an unknown program" : text::escapedForTerminal(path.string());
}

std::string hostLine(SessionBusConnection& bus) {
  const auto owner = ownerOf(bus, watcher);
  if (!owner) return "Panel: none shows status items; GNOME needs its AppIndicator extension";
  const BusReply reply = bus.callAndWait(
      {{watcher, "/StatusNotifierWatcher"},
       "org.freedesktop.DBus.Properties",
       "Get",
       "(v)",
       replyTimeout,
       takeArguments(g_variant_new("(ss)", watcher, "RegisteredStatusNotifierItems"))});
  std::string items = "an unknown number of";
  if (reply) {
    GVariant* list = nullptr;
    g_variant_get(reply.value.get(), "(v)", &list);
    const VariantPointer held(list);
    if (g_variant_is_of_type(list, G_VARIANT_TYPE_STRING_ARRAY))
      items = std::to_string(g_variant_n_children(list));
  }
  return "Panel: status items belong to " + withoutHome(*owner) + ", which shows " + items;
}

std::string notificationLine(SessionBusConnection& bus) {
  const BusReply reply = bus.callAndWait({{notifications, "/org/freedesktop/Notifications"},
                                          notifications,
                                          "GetServerInformation",
                                          "(ssss)",
                                          replyTimeout,
                                          nullptr});
  if (!reply) return "Notifications: no daemon is running; the bus may start one";
  const char *name = nullptr, *vendor = nullptr, *version = nullptr, *protocol = nullptr;
  g_variant_get(reply.value.get(), "(&s&s&s&s)", &name, &vendor, &version, &protocol);
  return "Notifications: " + text::escapedForTerminal(std::string(name) + ' ' + version);
}

ReportLines busLines() {
  SessionBusConnection bus;
  const std::string id(bundleIdentifier);
  const BusReply reply = bus.callAndWait(bus_daemon::call(
      "NameHasOwner", "(b)", replyTimeout, takeArguments(g_variant_new("(s)", id.c_str()))));
  if (!reply) return {"Session bus: " + text::escapedForTerminal(reply.error)};
  const auto running = ownerOf(bus, id);
  return {"Session bus: replies",
          "Hushbox: " + (running ? "running, " + withoutHome(*running) : "not running"),
          hostLine(bus), notificationLine(bus)};
}

std::string journalLine() {
  const Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, JournalLog::journalSocket, sizeof address.sun_path - 1);
  const bool isReachable =
      connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  return isReachable ? "Journal: reachable"
                     : "Journal: not reachable, so the log goes to standard error";
}

std::string loginLine(const std::string& program) {
  const auto folder = AutostartLoginItem::sessionFolder();
  AutostartLoginItem item(folder, program);
  if (item.status() == LoginItem::Status::enabled) return "Launch at login: on";
  const auto file = folder / (std::string(bundleIdentifier) + ".desktop");
  std::error_code error;
  if (!std::filesystem::exists(file, error)) return "Launch at login: off";
  const std::unique_ptr<GKeyFile, void (*)(GKeyFile*)> entry(g_key_file_new(), g_key_file_unref);
  g_key_file_load_from_file(entry.get(), file.c_str(), G_KEY_FILE_NONE, nullptr);
  char* const command = g_key_file_get_string(entry.get(), G_KEY_FILE_DESKTOP_GROUP,
                                              G_KEY_FILE_DESKTOP_KEY_EXEC, nullptr);
  const std::string target = command ? command : "nothing";
  g_free(command);
  return "Launch at login: off; the entry starts " + text::escapedForTerminal(withoutHome(target));
}

}  // namespace

std::string withoutHome(const std::string& path) {
  const char* const home = std::getenv("HOME");
  if (!home || std::strlen(home) < 2) return path;
  std::string result = path;
  const std::size_t at = result.find(home);
  return at == result.npos ? result : result.replace(at, std::strlen(home), "~");
}

ReportLines desktopReport(const std::string& program) {
  ReportLines lines{sessionLine()};
  for (std::string& line : busLines()) lines.push_back(std::move(line));
  lines.push_back(journalLine());
  lines.push_back(loginLine(program));
  return lines;
}

ReportLines batteryReport(const std::string& powerReport) {
  std::string program = powerReport;
  char* arguments[] = {program.data(), nullptr};
  char* output = nullptr;
  int status = 0;
  const bool isRun = g_spawn_sync(nullptr, arguments, nullptr, G_SPAWN_STDERR_TO_DEV_NULL, nullptr,
                                  nullptr, &output, nullptr, &status, nullptr);
  const std::string printed = output ? output : "";
  g_free(output);
  if (!isRun) return {"Battery: hushbox-power-report is missing"};
  if (!g_spawn_check_wait_status(status, nullptr)) return {"Battery: UPower does not reply"};
  ReportLines lines;
  for (const std::string_view line : text::splitLines(printed)) {
    const std::size_t tab = line.find('\t');
    if (tab == line.npos) continue;
    const std::string_view name = line.substr(0, tab);
    const bool isFollowed = text::contains(name, "Jabra");
    lines.push_back("Battery: " +
                    text::escapedForTerminal(isFollowed ? name.substr(name.find_first_not_of(" -"))
                                                        : "another device") +
                    ", " + text::escapedForTerminal(line.substr(tab + 1)));
  }
  if (lines.empty()) lines.emplace_back("Battery: UPower knows none of an accessory");
  return lines;
}

}  // namespace hushbox
