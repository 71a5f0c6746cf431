#include "platform/linux/menubar/PanelTheme.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/bus/InstalledSettings.h"

namespace hushbox {
namespace {

constexpr const char* mateSchema = "org.mate.interface";
constexpr const char* mateKey = "gtk-theme";

/// Parts of the names of themes with a dark panel: those that MATE ships, those of Ubuntu MATE
/// ("Ambiant-MATE"), and what others call their dark variants ("Adwaita-dark").
constexpr std::string_view darkThemes[] = {"ambian", "black", "dark", "inverse", "submarine"};

/// The tone of a panel whose text has this colour ("#rrggbb"). Anything else means Qt's default,
/// which is black.
PanelTone toneBelowText(std::string_view colour) {
  unsigned value = 0;
  if (colour.size() == 7 && colour.front() == '#') {
    const char* const end = colour.data() + colour.size();
    if (std::from_chars(colour.data() + 1, end, value, 16).ptr != end) value = 0;
  }
  const unsigned sum = (value >> 16 & 0xff) + (value >> 8 & 0xff) + (value & 0xff);
  return sum > 3 * 127 ? PanelTone::dark : PanelTone::light;
}

/// The user's folder, then the system's.
std::vector<std::string> configFolders() {
  std::vector<std::string> result{g_get_user_config_dir()};
  for (const char* const* folder = g_get_system_config_dirs(); *folder; ++folder)
    result.emplace_back(*folder);
  return result;
}

/// The colour of text in a file of LXQt's settings; empty if there is none.
std::string textColourIn(const std::string& path) {
  GKeyFile* const file = g_key_file_new();
  gchar* colour = nullptr;
  if (g_key_file_load_from_file(file, path.c_str(), G_KEY_FILE_NONE, nullptr))
    colour = g_key_file_get_string(file, "Palette", "window_text_color", nullptr);
  std::string result = colour ? colour : "";
  g_free(colour);
  g_key_file_free(file);
  return result;
}

}  // namespace

PanelTone panelToneOfGtkTheme(std::string name) {
  std::ranges::transform(name, name.begin(), [](char c) { return g_ascii_tolower(c); });
  const bool isDark = std::ranges::any_of(
      darkThemes, [&](std::string_view part) { return name.find(part) != std::string::npos; });
  return isDark ? PanelTone::dark : PanelTone::light;
}

PanelTone panelToneOfLxqt(const std::vector<std::string>& configFolders) {
  for (const std::string& folder : configFolders) {
    const std::string colour = textColourIn(folder + "/lxqt/lxqt.conf");
    if (!colour.empty()) return toneBelowText(colour);
  }
  return PanelTone::light;
}

PanelTheme::PanelTheme(std::string_view desktop, std::function<void()> changed,
                       GSettingsBackend* backend)
    : changed_(std::move(changed)) {
  if (namesDesktop(desktop, "MATE")) openMateSettings(backend);
  if (namesDesktop(desktop, "LXQt")) lxqt_ = panelToneOfLxqt(configFolders());
}

PanelTone PanelTheme::tone() const {
  if (!mate_) return lxqt_;
  gchar* const name = g_settings_get_string(mate_.get(), mateKey);
  std::string copy(name);
  g_free(name);
  return panelToneOfGtkTheme(std::move(copy));
}

void PanelTheme::openMateSettings(GSettingsBackend* backend) {
  mate_ = openInstalledSettings(mateSchema, mateKey, backend);
  if (mate_) g_signal_connect(mate_.get(), "changed::gtk-theme", G_CALLBACK(themeChanged), this);
}

void PanelTheme::themeChanged(GSettings*, const char*, gpointer self) {
  static_cast<PanelTheme*>(self)->changed_();
}

}  // namespace hushbox
