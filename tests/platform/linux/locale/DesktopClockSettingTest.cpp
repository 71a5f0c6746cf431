#include "platform/linux/locale/DesktopClockSetting.h"

#define G_SETTINGS_ENABLE_BACKEND
#include <gio/gsettingsbackend.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>

#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;

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

TEST_F(DesktopClockSettingTest, ReturnsTheUsersSetting) {
  g_settings_set_string(settings_.get(), "clock-format", "12h");
  EXPECT_EQ(style(), ClockStyle::twelveHours);
  g_settings_set_string(settings_.get(), "clock-format", "24h");
  EXPECT_EQ(style(), ClockStyle::twentyFourHours);
}

TEST_F(DesktopClockSettingTest, DefaultCountsOnlyOnGnome) {
  EXPECT_EQ(style(), std::nullopt);
  environment_.set("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
  EXPECT_EQ(style(), ClockStyle::twentyFourHours);
}

void outliveTheBus() {
  rehearsal::Session session;
  session.applyToThisProcess();
  unsetenv("GSETTINGS_BACKEND");
  SessionBusConnection bus;
  const DesktopClockSetting setting(bus);
  bus.connect();
  rehearsal::letPass(300ms);
  setting.style();
  session.bus().kill();
  rehearsal::letPass(300ms);
}

TEST(DesktopClockSettingSessionTest, EndOfTheSessionBusDoesNotEndTheProgram) {
  // In a process of its own, since the storage of the settings keeps its connection for good.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        outliveTheBus();
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), "");
}

TEST(DesktopClockSettingSessionTest, ReturnsNulloptWithoutASessionBus) {
  ScopedEnvironment environment;
  environment.set("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
  environment.set("XDG_RUNTIME_DIR", "/nowhere");
  SessionBusConnection bus;
  const DesktopClockSetting setting(bus);
  bus.connect();
  rehearsal::letPass(20ms);
  EXPECT_EQ(setting.style(), std::nullopt);
}

}  // namespace
}  // namespace hushbox
