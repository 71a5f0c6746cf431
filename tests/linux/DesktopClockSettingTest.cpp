#include "platform/linux/DesktopClockSetting.h"

#define G_SETTINGS_ENABLE_BACKEND
#include <gio/gsettingsbackend.h>
#include <gtest/gtest.h>

#include <memory>

#include "tests/linux/ScopedEnvironment.h"

namespace hushbox {
namespace {

class DesktopClockSettingTest : public testing::Test {
 protected:
  void SetUp() override {
    GSettingsSchema* const schema = g_settings_schema_source_lookup(
        g_settings_schema_source_get_default(), "org.gnome.desktop.interface", TRUE);
    if (!schema) GTEST_SKIP() << "The desktop's settings are not installed.";
    g_settings_schema_unref(schema);
    settings_.reset(g_settings_new_with_backend("org.gnome.desktop.interface", backend_.get()));
    environment_.set("XDG_CURRENT_DESKTOP", "XFCE");
  }

  std::optional<ClockStyle> style() const { return DesktopClockSetting(backend_.get()).style(); }

  ScopedEnvironment environment_;
  std::unique_ptr<GSettingsBackend, void (*)(gpointer)> backend_{g_memory_settings_backend_new(),
                                                                 g_object_unref};
  std::unique_ptr<GSettings, void (*)(gpointer)> settings_{nullptr, g_object_unref};
};

TEST_F(DesktopClockSettingTest, ChoiceOfTheUserIsTold) {
  g_settings_set_string(settings_.get(), "clock-format", "12h");
  EXPECT_EQ(style(), ClockStyle::twelveHours);
  g_settings_set_string(settings_.get(), "clock-format", "24h");
  EXPECT_EQ(style(), ClockStyle::twentyFourHours);
}

TEST_F(DesktopClockSettingTest, DefaultCountsOnlyOnTheDesktopThatItBelongsTo) {
  EXPECT_EQ(style(), std::nullopt);
  environment_.set("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
  EXPECT_EQ(style(), ClockStyle::twentyFourHours);
}

}  // namespace
}  // namespace hushbox
