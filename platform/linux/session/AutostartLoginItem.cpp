#include "platform/linux/session/AutostartLoginItem.h"

#include <gio/gdesktopappinfo.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "support/BundleIdentifier.h"
#include "support/Text.h"

namespace hushbox {
namespace {

constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;
constexpr const char* enabledByDesktop = "X-GNOME-Autostart-enabled";
constexpr const char* envProgram = "/usr/bin/env";

/// A command line of this program alone, quoted as the key "Exec" requires.
std::string commandLine(const std::string& program) {
  // GLib looks up the first word before it turns the doubled percent sign into one.
  std::string quoted = program.find('%') == program.npos ? "\"" : std::string(envProgram) + " \"";
  for (const char c : program) {
    if (std::string_view("\"`$\\").find(c) != std::string_view::npos) quoted += '\\';
    if (c == '%') quoted += '%';
    quoted += c;
  }
  return quoted + '"';
}

/// Whether an entry can name the program. Some desktops read "=" as an assignment.
bool canBeNamed(const std::string& program) {
  return program.starts_with('/') && text::isValidUtf8(program) &&
         program.find_first_of(std::string_view("=\0", 2)) == program.npos;
}

/// The program that a command line starts; empty for a command line that cannot be read.
std::string programOf(const char* commandLine) {
  int count = 0;
  char** words = nullptr;
  if (!g_shell_parse_argv(commandLine, &count, &words, nullptr)) return {};
  std::string program = count > 1 && std::string_view(words[0]) == envProgram ? words[1] : words[0];
  g_strfreev(words);
  for (std::size_t at = 0; (at = program.find("%%", at)) != program.npos; ++at)
    program.erase(at, 1);
  if (program.starts_with('/')) return program;
  char* const found = g_find_program_in_path(program.c_str());
  program = found ? found : "";
  g_free(found);
  return program;
}

bool areSameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return std::filesystem::equivalent(a, b, error);
}

/// The whole entry. GLib adds the second layer of escapes, that of key files.
std::string entry(const std::string& program) {
  const std::unique_ptr<GKeyFile, void (*)(GKeyFile*)> file(g_key_file_new(), g_key_file_unref);
  const auto set = [&](const char* key, const char* value) {
    g_key_file_set_string(file.get(), group, key, value);
  };
  set(G_KEY_FILE_DESKTOP_KEY_TYPE, G_KEY_FILE_DESKTOP_TYPE_APPLICATION);
  set(G_KEY_FILE_DESKTOP_KEY_NAME, "Hushbox");
  set(G_KEY_FILE_DESKTOP_KEY_COMMENT, "Keeps the speakerphone and Teams on one mute state");
  set(G_KEY_FILE_DESKTOP_KEY_ICON, std::string(bundleIdentifier).c_str());
  set(G_KEY_FILE_DESKTOP_KEY_TRY_EXEC, program.c_str());
  set(G_KEY_FILE_DESKTOP_KEY_EXEC, commandLine(program).c_str());
  set(G_KEY_FILE_DESKTOP_KEY_TERMINAL, "false");
  set(enabledByDesktop, "true");
  gsize length = 0;
  char* const data = g_key_file_to_data(file.get(), &length, nullptr);
  std::string text(data, length);
  g_free(data);
  return text;
}

}  // namespace

AutostartLoginItem::AutostartLoginItem(const std::filesystem::path& folder, std::string program)
    : file_(folder / (std::string(bundleIdentifier) + ".desktop")), program_(std::move(program)) {}

std::filesystem::path AutostartLoginItem::sessionFolder() {
  // Not from GLib, which reads the variables only once per process.
  if (const char* folder = std::getenv("XDG_CONFIG_HOME"); folder && *folder == '/')
    return std::filesystem::path(folder) / "autostart";
  if (const char* home = std::getenv("HOME"); home && *home == '/')
    return std::filesystem::path(home) / ".config" / "autostart";
  return {};
}

std::string AutostartLoginItem::runningProgram() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

LoginItem::Status AutostartLoginItem::status() {
  const std::unique_ptr<GDesktopAppInfo, void (*)(gpointer)> info(
      g_desktop_app_info_new_from_filename(file_.c_str()), g_object_unref);
  const char* const command = info ? g_app_info_get_commandline(G_APP_INFO(info.get())) : nullptr;
  const bool starts = command && areSameFile(programOf(command), program_) &&
                      !g_desktop_app_info_get_is_hidden(info.get()) &&
                      g_desktop_app_info_get_show_in(info.get(), nullptr) &&
                      (!g_desktop_app_info_has_key(info.get(), enabledByDesktop) ||
                       g_desktop_app_info_get_boolean(info.get(), enabledByDesktop));
  return starts ? Status::enabled : Status::notRegistered;
}

bool AutostartLoginItem::registerItem() {
  if (!file_.is_absolute() || !canBeNamed(program_)) return false;
  const std::string text = entry(program_);
  return g_mkdir_with_parents(file_.parent_path().c_str(), 0700) == 0 &&
         g_file_set_contents_full(file_.c_str(), text.data(), static_cast<gssize>(text.size()),
                                  static_cast<GFileSetContentsFlags>(
                                      G_FILE_SET_CONTENTS_CONSISTENT | G_FILE_SET_CONTENTS_DURABLE),
                                  0644, nullptr);
}

bool AutostartLoginItem::unregisterItem() {
  return unlink(file_.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR;
}

}  // namespace hushbox
