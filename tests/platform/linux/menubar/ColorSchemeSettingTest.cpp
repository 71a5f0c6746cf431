#include "platform/linux/menubar/ColorSchemeSetting.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

#include "platform/linux/menubar/IconPixmap.h"
#include "rehearsal/ScratchFolder.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::letPass;
using rehearsal::serverTimeout;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// The Settings interface of the desktop portal, with one setting.
class Portal {
 public:
  Portal(const std::string& busAddress, GVariant* answer)
      : bus_(busAddress), answer_(g_variant_ref_sink(answer)) {
    static const GDBusInterfaceVTable vtable{
        [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
           GDBusMethodInvocation* invocation, gpointer self) {
          ++static_cast<Portal*>(self)->reads_;
          g_dbus_method_invocation_return_value(
              invocation, g_variant_new("(v)", static_cast<Portal*>(self)->answer_));
        },
        nullptr,
        nullptr,
        {}};
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(
        "<node><interface name='org.freedesktop.portal.Settings'><method name='Read'>"
        "<arg type='s' direction='in'/><arg type='s' direction='in'/>"
        "<arg type='v' direction='out'/></method></interface></node>",
        nullptr);
    object_ =
        g_dbus_connection_register_object(bus_.get(), "/org/freedesktop/portal/desktop",
                                          node->interfaces[0], &vtable, this, nullptr, nullptr);
    g_dbus_node_info_unref(node);
    bus_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
              "RequestName", g_variant_new("(su)", "org.freedesktop.portal.Desktop", 0));
  }
  ~Portal() {
    g_dbus_connection_unregister_object(bus_.get(), object_);
    g_variant_unref(answer_);
  }
  Portal(const Portal&) = delete;
  Portal& operator=(const Portal&) = delete;

  void change(const char* space, const char* key, GVariant* value) {
    g_dbus_connection_emit_signal(bus_.get(), nullptr, "/org/freedesktop/portal/desktop",
                                  "org.freedesktop.portal.Settings", "SettingChanged",
                                  g_variant_new("(ssv)", space, key, value), nullptr);
  }
  int reads() const { return reads_; }

 private:
  rehearsal::BusConnection bus_;
  GVariant* answer_;
  int reads_ = 0;
  guint object_ = 0;
};

class ColorSchemeSettingTest : public PanelFixture {
 protected:
  static constexpr const char* appearance = "org.freedesktop.appearance";

  /// Whether the icon becomes the one for such a panel.
  bool iconBecomes(PanelTone tone) {
    const IconPixmap wanted = IconPixmap::render(icon(), 16, tone);
    return rehearsal::holdsWithin(
        [&] {
          const auto answer = ofItem("IconPixmap");
          GVariant* bytes = nullptr;
          g_variant_get_child(answer.value.get(), 0, "(ii@ay)", nullptr, nullptr, &bytes);
          gsize count = 0;
          const auto* first =
              static_cast<const std::uint8_t*>(g_variant_get_fixed_array(bytes, &count, 1));
          const bool same = std::vector(first, first + count) == wanted.bytes;
          g_variant_unref(bytes);
          return same;
        },
        serverTimeout);
  }
};

TEST_F(ColorSchemeSettingTest, ReadsTheSettingFromARunningPortal) {
  // The older method wraps its value twice.
  const Portal portal(session_.busAddress(), g_variant_new_variant(g_variant_new_uint32(2)));
  start();
  EXPECT_TRUE(iconBecomes(PanelTone::light));
}

TEST_F(ColorSchemeSettingTest, ReadsTheSettingFromAPortalThatStartsLaterAndFollowsIt) {
  start();
  EXPECT_TRUE(iconBecomes(PanelTone::unknown));
  Portal portal(session_.busAddress(), g_variant_new_uint32(1));
  EXPECT_TRUE(iconBecomes(PanelTone::dark));
  client_->takeSignals();
  portal.change(appearance, "color-scheme", g_variant_new_uint32(2));
  EXPECT_TRUE(iconBecomes(PanelTone::light));
  EXPECT_THAT(client_->takeSignals(), ElementsAre("NewIcon"));
  portal.change(appearance, "color-scheme", g_variant_new_uint32(7));
  EXPECT_TRUE(iconBecomes(PanelTone::unknown));
}

TEST_F(ColorSchemeSettingTest, DoesNotReadOnceItIsDestroyed) {
  start();
  menuBar_.reset();
  Portal portal(session_.busAddress(), g_variant_new_uint32(1));
  letPass(100ms);
  portal.change(appearance, "color-scheme", g_variant_new_uint32(2));
  letPass(50ms);
  EXPECT_EQ(portal.reads(), 0);
}

TEST_F(ColorSchemeSettingTest, IgnoresOtherSettingsAndTypes) {
  Portal portal(session_.busAddress(), g_variant_new_string("dark"));
  start();
  portal.change(appearance, "accent-color", g_variant_new_uint32(1));
  portal.change("org.gnome.desktop", "color-scheme", g_variant_new_uint32(1));
  portal.change(appearance, "color-scheme", g_variant_new_string("light"));
  letPass(100ms);
  EXPECT_TRUE(iconBecomes(PanelTone::unknown));
  EXPECT_THAT(client_->takeSignals(), IsEmpty());
}

// A panel that shows the colour in the icon's file would show a grey mask.
TEST_F(ColorSchemeSettingTest, NamedIconIsForPanelsThatRecolourItOrWhoseToneIsUnknown) {
  const rehearsal::ScratchFolder icons;
  const auto folder = icons.path() / "hicolor/symbolic/apps";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "org.hushbox.Hushbox.mask-symbolic.svg") << "<svg/>";
  ScopedEnvironment environment;
  for (const char* desktop : {"KDE", "Budgie"}) {
    environment.set("XDG_CURRENT_DESKTOP", desktop);
    start(icons.path());
    EXPECT_THAT(ofItem("IconName").text(), HasSubstr("Hushbox.mask-symbolic")) << desktop;
    const Portal portal(session_.busAddress(), g_variant_new_uint32(1));
    EXPECT_TRUE(iconBecomes(PanelTone::dark));
    EXPECT_EQ(ofItem("IconName").text() == "''", std::string_view(desktop) == "Budgie");
    menuBar_.reset();
  }
}

TEST_F(ColorSchemeSettingTest, TintedIconIsNotSentAgain) {
  Portal portal(session_.busAddress(), g_variant_new_uint32(1));
  start();
  ASSERT_TRUE(iconBecomes(PanelTone::dark));
  menuBar_->setIcon(icon(Color::systemGreen), "Not on a call");
  client_->takeSignals();
  portal.change(appearance, "color-scheme", g_variant_new_uint32(2));
  letPass(100ms);
  EXPECT_THAT(client_->takeSignals(), IsEmpty());
  menuBar_->setIcon(icon(), "Not on a call");
  EXPECT_TRUE(iconBecomes(PanelTone::light));
}

TEST_F(ColorSchemeSettingTest, GnomesBarCountsAsDark) {
  setenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME", 1);
  start();
  EXPECT_TRUE(iconBecomes(PanelTone::dark));
  unsetenv("XDG_CURRENT_DESKTOP");
}

}  // namespace
}  // namespace hushbox
