#include "platform/linux/menubar/PanelTheme.h"

#define G_SETTINGS_ENABLE_BACKEND
#include <gio/gsettingsbackend.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "rehearsal/ScratchFolder.h"

namespace hushbox {
namespace {

TEST(PanelTheme, NameOfTheThemeSaysWhetherMatesPanelIsDark) {
  for (const char* name : {"BlackMATE", "Adwaita-dark", "Yaru-MATE-dark", "Blue-Submarine",
                           "HighContrastInverse", "Ambiant-MATE"})
    EXPECT_EQ(panelToneOfGtkTheme(name), PanelTone::dark) << name;
  for (const char* name : {"Menta", "BlueMenta", "TraditionalOk", "Adwaita", "ContrastHigh", ""})
    EXPECT_EQ(panelToneOfGtkTheme(name), PanelTone::light) << name;
}

TEST(PanelTheme, FollowsMatesTheme) {
  GSettingsSchema* const schema = g_settings_schema_source_lookup(
      g_settings_schema_source_get_default(), "org.mate.interface", TRUE);
  if (!schema) GTEST_SKIP() << "MATE's settings are not installed.";
  g_settings_schema_unref(schema);
  const ObjectPointer<GSettingsBackend> backend(g_memory_settings_backend_new());
  const ObjectPointer<GSettings> settings(
      g_settings_new_with_backend("org.mate.interface", backend.get()));
  int changes = 0;
  const PanelTheme theme(
      "MATE", [&] { ++changes; }, backend.get());
  EXPECT_EQ(theme.tone(), PanelTone::light);
  g_settings_set_string(settings.get(), "gtk-theme", "BlackMATE");
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  EXPECT_GE(changes, 1);
  EXPECT_EQ(theme.tone(), PanelTone::dark);
}

TEST(PanelTheme, IsUnknownOnOtherDesktops) {
  for (const char* desktop : {"", "XFCE", "ubuntu:GNOME", "sway"})
    EXPECT_EQ(PanelTheme(desktop, [] {}).tone(), PanelTone::unknown) << desktop;
}

class LxqtPanelToneTest : public testing::Test {
 protected:
  void write(const char* folder, const char* text) {
    std::filesystem::create_directories(scratch_.path() / folder / "lxqt");
    std::ofstream(scratch_.path() / folder / "lxqt/lxqt.conf") << text;
  }
  PanelTone tone() const {
    return panelToneOfLxqt(
        {(scratch_.path() / "user").string(), (scratch_.path() / "system").string()});
  }

  rehearsal::ScratchFolder scratch_;
};

TEST_F(LxqtPanelToneTest, LightTextIsOnADarkPanel) {
  write("user", "[General]\ntheme=dark\n[Palette]\nwindow_text_color=#dedede\n");
  EXPECT_EQ(tone(), PanelTone::dark);
  write("user", "[Palette]\nwindow_text_color=#232627\n");
  EXPECT_EQ(tone(), PanelTone::light);
}

TEST_F(LxqtPanelToneTest, UsersColourPrecedesTheSystems) {
  write("system", "[Palette]\nwindow_text_color=#ffffff\n");
  EXPECT_EQ(tone(), PanelTone::dark);
  write("user", "[Palette]\nwindow_text_color=#000000\n");
  EXPECT_EQ(tone(), PanelTone::light);
}

TEST_F(LxqtPanelToneTest, TextIsBlackByDefault) {
  EXPECT_EQ(tone(), PanelTone::light);
  for (const char* text : {"[Palette]\nwindow_text_color=white\n", "no settings",
                           "[Palette]\nwindow_text_color=#fffffg\n", "[Palette]\n"}) {
    write("user", text);
    EXPECT_EQ(tone(), PanelTone::light) << text;
  }
}

}  // namespace
}  // namespace hushbox
