#include "platform/linux/menubar/StatusNotifierItem.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/menubar/IconPixmap.h"
#include "rehearsal/ScratchFolder.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class StatusNotifierItemTest : public PanelFixture {
 protected:
  std::vector<IconPixmap> pixmaps() {
    const auto answer = ofItem("IconPixmap");
    std::vector<IconPixmap> all;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, answer.value.get());
    int width = 0, height = 0;
    for (GVariant* bytes = nullptr;
         g_variant_iter_next(&iterator, "(ii@ay)", &width, &height, &bytes);) {
      EXPECT_EQ(width, height);
      gsize count = 0;
      const auto* first =
          static_cast<const std::uint8_t*>(g_variant_get_fixed_array(bytes, &count, 1));
      all.push_back({width, {first, first + count}});
      g_variant_unref(bytes);
    }
    return all;
  }
};

TEST_F(StatusNotifierItemTest, HasItsPropertiesAndThePathOfItsMenu) {
  start();
  EXPECT_EQ(ofItem("Category").text(), "'Hardware'");
  EXPECT_EQ(ofItem("Id").text(), "'hushbox'");
  EXPECT_EQ(ofItem("Title").text(), "'Hushbox'");
  EXPECT_EQ(ofItem("Status").text(), "'Active'");
  EXPECT_EQ(ofItem("IconName").text(), "''");
  EXPECT_EQ(ofItem("OverlayIconPixmap").text(), "[]");
  EXPECT_EQ(ofItem("ItemIsMenu").text(), "true");
  EXPECT_EQ(ofItem("Menu").text(), "'/MenuBar'");
  EXPECT_EQ(ofItem("WindowId").text(), "0");
}

TEST_F(StatusNotifierItemTest, AllItsPropertiesCanBeReadAtOnce) {
  start();
  const auto answer = client_->call(name_, "/StatusNotifierItem", "org.freedesktop.DBus.Properties",
                                    "GetAll", g_variant_new("(s)", item));
  EXPECT_EQ(answer.error, "");
}

TEST_F(StatusNotifierItemTest, RefusesActivateAndContextMenuWithoutADisplay) {
  start();
  for (const char* method : {"Activate", "ContextMenu"}) {
    EXPECT_EQ(client_->call(name_, "/StatusNotifierItem", item, method, g_variant_new("(ii)", 5, 5))
                  .error,
              "org.freedesktop.DBus.Error.UnknownMethod");
  }
}

TEST_F(StatusNotifierItemTest, RefusesThePanelsClicksWithoutADisplay) {
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  start();
  watcher_.reset();
  // The client is the panel now.
  client_->call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
                g_variant_new("(su)", "org.kde.StatusNotifierWatcher", 0));
  rehearsal::letPass(std::chrono::milliseconds{100});
  EXPECT_EQ(
      client_->call(name_, "/StatusNotifierItem", item, "Activate", g_variant_new("(ii)", 5, 5))
          .error,
      "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_F(StatusNotifierItemTest, DoesNotRegisterOnceItIsDestroyed) {
  start();
  menuBar_.reset();
  watcher_.reset();
  watcher_ = std::make_unique<Watcher>(session_.busAddress());
  rehearsal::letPass(std::chrono::milliseconds{50});
  EXPECT_THAT(watcher_->items(), IsEmpty());
}

TEST_F(StatusNotifierItemTest, IconHasTheSizesOfPanels) {
  start();
  std::vector<int> sizes;
  for (const IconPixmap& pixmap : pixmaps()) {
    sizes.push_back(pixmap.size);
    EXPECT_EQ(pixmap, IconPixmap::render(icon(), pixmap.size, PanelTone::unknown));
  }
  EXPECT_THAT(sizes, ElementsAre(16, 18, 22, 24, 32, 36, 44, 48, 64));
}

TEST_F(StatusNotifierItemTest, TemplateIsShownByNameWhereItsIconIsInstalled) {
  const rehearsal::ScratchFolder icons;
  const auto folder = icons.path() / "hicolor/symbolic/apps";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "org.hushbox.Hushbox.mask-symbolic.svg") << "<svg/>";
  std::ofstream(folder / "org.hushbox.Hushbox.mask-muted-symbolic.svg") << "<svg/>";
  start(icons.path());
  EXPECT_EQ(ofItem("IconThemePath").text(), "'" + icons.path().string() + "'");
  EXPECT_EQ(ofItem("IconName").text(), "'org.hushbox.Hushbox.mask-symbolic'");
  menuBar_->setIcon(icon({}, true), "Not on a call");
  EXPECT_THAT(client_->takeSignals(), ElementsAre("NewIcon"));
  EXPECT_EQ(ofItem("IconName").text(), "'org.hushbox.Hushbox.mask-muted-symbolic'");
  // Panels that don't find the name show the pixels.
  EXPECT_EQ(pixmaps().front(), IconPixmap::render(icon({}, true), 16, PanelTone::unknown));
  menuBar_->setIcon(icon(Color::systemRed, true), "Not on a call");
  EXPECT_EQ(ofItem("IconName").text(), "''");
  menuBar_->setIcon(LuchadorArt::menuBarImage(false, false, {}), "Jabra not connected");
  EXPECT_EQ(ofItem("IconName").text(), "''") << "its icon is not installed";
}

// The icons are those that the build draws.
TEST_F(StatusNotifierItemTest, PanelThatEnlargesPixelsGetsEveryIconByNameInItsTone) {
  start();
  StatusNotifierItem named(
      *sessionBus_, [](const std::string&) {}, HUSHBOX_ICONS);
  const Subscription connection = sessionBus_->observe(
      [&](GDBusConnection* bus) {
        menuBar_.reset();  // which has an item on the same path
        named.exportOn(bus);
      },
      [](const std::string&) {});
  const std::pair<PanelTone, std::string> suffixes[] = {{PanelTone::dark, ".white"},
                                                        {PanelTone::light, ".darkgrey"},
                                                        {PanelTone::unknown, "-symbolic"}};
  for (const auto& [tone, suffix] : suffixes) {
    named.setPanelTone(tone, false, true);
    for (const bool muted : {false, true}) {
      for (const bool connected : {false, true}) {
        const Image mask = LuchadorArt::menuBarImage(muted, connected, {});
        named.setIcon(mask, "Not on a call");
        EXPECT_EQ(ofItem("IconName").text(), "'" + mask.name + suffix + "'");
      }
    }
  }
  named.setPanelTone(PanelTone::dark, false, true);
  named.setIcon(icon(Color::systemGreen), "On a call — live");
  EXPECT_EQ(ofItem("IconName").text(), "'org.hushbox.Hushbox.green'");
  named.setIcon(icon(Color::systemRed, true), "On a call — muted");
  EXPECT_EQ(ofItem("IconName").text(), "'org.hushbox.Hushbox.red-muted'");
  named.setPanelTone(PanelTone::dark, false, false);
  EXPECT_EQ(ofItem("IconName").text(), "''");
}

TEST_F(StatusNotifierItemTest, StateIsTheFirstLineOfTheToolTip) {
  start();
  menuBar_->setIcon(icon(), "On a call — muted");
  EXPECT_EQ(ofItem("IconAccessibleDesc").text(), "'On a call — muted'");
  EXPECT_EQ(ofItem("ToolTip").text(), "('', [], 'On a call — muted', '')");
}

TEST_F(StatusNotifierItemTest, WordsAreEscaped) {
  start();
  menuBar_->setIcon(icon(), std::string("<b>&\0\n\xff", 8));
  EXPECT_THAT(ofItem("IconAccessibleDesc").text(), HasSubstr("<b>&\\\\n\xEF\xBF\xBD"));
  EXPECT_THAT(ofItem("ToolTip").text(), HasSubstr("<b>&\\\\n\xEF\xBF\xBD"));
}

TEST_F(StatusNotifierItemTest, SameIconAndWordsSendNoSignal) {
  start();
  menuBar_->setIcon(icon(), "Not on a call");
  EXPECT_THAT(client_->takeSignals(), IsEmpty());
}

TEST_F(StatusNotifierItemTest, ChangedPixelsOrWordsSendASignal) {
  start();
  menuBar_->setIcon(icon({}, true), "Not on a call");
  EXPECT_THAT(client_->takeSignals(), ElementsAre("NewIcon"));
  menuBar_->setIcon(icon({}, true), "On a call");
  EXPECT_THAT(client_->takeSignals(), ElementsAre("NewToolTip"));
  menuBar_->setIcon(icon(Color::systemRed, true), "On a call — muted");
  EXPECT_THAT(client_->takeSignals(), ElementsAre("NewIcon", "NewToolTip"));
  for (const IconPixmap& pixmap : pixmaps()) {
    EXPECT_EQ(pixmap,
              IconPixmap::render(icon(Color::systemRed, true), pixmap.size, PanelTone::unknown));
  }
}

TEST_F(StatusNotifierItemTest, TemplateAndPlainImageAreDifferentIcons) {
  start();
  Image image = icon();
  image.isTemplate = false;
  menuBar_->setIcon(image, "Not on a call");
  EXPECT_THAT(client_->takeSignals(), ElementsAre("NewIcon"));
}

}  // namespace
}  // namespace hushbox
