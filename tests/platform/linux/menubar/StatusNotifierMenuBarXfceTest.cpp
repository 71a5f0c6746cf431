#include <gmock/gmock.h>

#include <array>
#include <concepts>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/LuchadorArt.h"
#include "platform/linux/menubar/StatusNotifierMenuBar.h"
#include "rehearsal/Panel.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"
#include "tests/platform/linux/fixtures/Picture.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::letPass;
using rehearsal::Panel;
using rehearsal::serverTimeout;
using rehearsal::Session;
using rehearsal::waitUntil;
using std::chrono::milliseconds;

using Pixel = Picture::Pixel;

struct State {
  const char* name;
  bool muted;
  bool connected;
  std::optional<Color> tint;
  const char* words;
};

constexpr std::array states{
    State{"connected", false, true, {}, "Not on a call"},
    State{"muted", true, true, {}, "Not on a call, muted"},
    State{"disconnected", false, false, {}, "Jabra not connected"},
    State{"disconnected-muted", true, false, {}, "Jabra not connected, muted"},
    State{"call-live", false, true, Color::systemGreen, "On a call, live"},
    State{"call-muted", true, true, Color::systemRed, "On a call, muted"},
};

/// The item in a real panel, with screenshots and clicks.
class StatusNotifierMenuBarXfceTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    unsetenv("XDG_CURRENT_DESKTOP");
    session_ = std::make_unique<Session>(Session::Options{.display = true, .systemBus = false});
    session_->applyToThisProcess();
    panel_ = std::make_unique<Panel>(*session_);
  }
  static void TearDownTestSuite() {
    panel_.reset();
    session_.reset();
  }

  StatusNotifierMenuBarXfceTest() {
    panel_->setTone(Panel::Tone::Dark);
    menuBar_ = std::make_unique<StatusNotifierMenuBar>(*sessionBus_, log_);
    show(states[0]);
    showRows("Not on a call");
    panel_->waitForItem();
  }
  ~StatusNotifierMenuBarXfceTest() override {
    if (panel_->menu()) panel_->closeMenu();
    menuBar_.reset();
    // The panel removes the item when its connection is closed.
    sessionBus_.reset();
    holdsWithin([] { return panel_->items().empty(); }, serverTimeout);
  }

  void show(const State& state) {
    menuBar_->setIcon(LuchadorArt::menuBarImage(state.muted, state.connected, state.tint),
                      state.words);
  }

  struct Extras {
    bool battery = false;
    bool untrusted = false;
    bool launch = false;
  };
  void showRows(const std::string& call, const Extras& extras) {
    using Kind = MenuRow::Kind;
    const auto chosen = [this](const char* what) { return [this, what] { chosen_ = what; }; };
    std::vector<MenuRow> rows{{.kind = Kind::text, .text = call}};
    if (extras.battery) rows.push_back({.kind = Kind::text, .text = "Battery: 42% (charging)"});
    rows.push_back({.kind = Kind::text, .text = "10:42 Muted by the headset_button"});
    rows.push_back({.kind = Kind::separator});
    if (extras.untrusted) {
      rows.push_back({.kind = Kind::button,
                      .text = "Grant Accessibility…",
                      .enabled = true,
                      .action = chosen("grant")});
    }
    rows.push_back({.kind = Kind::toggle,
                    .text = "Launch at login",
                    .enabled = true,
                    .on = extras.launch,
                    .action = chosen("launch")});
    rows.push_back({.kind = Kind::separator});
    rows.push_back({.kind = Kind::button,
                    .text = "Quit Hushbox",
                    .enabled = true,
                    .keyEquivalent = "q",
                    .action = chosen("quit")});
    menuBar_->setRows(std::move(rows));
  }
  void showRows(const std::string& call) { showRows(call, {}); }

  /// Takes pictures until one is as expected; the last one is kept.
  template <typename Predicate>
  void waitForPicture(const std::string& name, const Panel::Area& area, Predicate isAsAwaited) {
    waitForPicture(
        name, [&] { return area; }, isAsAwaited);
  }
  template <typename Where, typename Predicate>
  requires std::invocable<Where>
  void waitForPicture(const std::string& name, Where where, Predicate isAsAwaited) {
    const std::filesystem::path file = Picture::folder() / (name + ".png");
    waitUntil(
        [&] {
          panel_->picture(where(), file);
          return isAsAwaited(Picture(file));
        },
        serverTimeout, "the picture " + name);
  }

  static inline std::unique_ptr<Session> session_;
  static inline std::unique_ptr<Panel> panel_;
  KeptLog log_;
  std::unique_ptr<SessionBusConnection> sessionBus_ = std::make_unique<SessionBusConnection>();
  std::unique_ptr<StatusNotifierMenuBar> menuBar_;
  std::string chosen_;
};

bool isOfColour(const Pixel& pixel, std::optional<Color> tint) {
  if (!tint) return Picture::difference(pixel, {pixel[0], pixel[0], pixel[0]}) < 16;
  const int red = pixel[0], green = pixel[1];
  return *tint == Color::systemRed ? red - green > 80 : green - red > 60;
}

TEST_F(StatusNotifierMenuBarXfceTest, EachStateIsVisibleOnADarkAndALightPanel) {
  for (const Panel::Tone tone : {Panel::Tone::Dark, Panel::Tone::Light}) {
    panel_->setTone(tone);
    const std::string panelName = tone == Panel::Tone::Dark ? "dark" : "light";
    for (const State& state : states) {
      show(state);
      const std::string name = "item-" + panelName + "-" + state.name;
      waitForPicture(
          name, [] { return panel_->waitForItem(); },
          [&](const Picture& picture) {
            const Pixel background = picture.at(0, 2);
            const bool rightPanel = (background[0] < 128) == (tone == Panel::Tone::Dark);
            const int coloured = picture.count([&](const Pixel& pixel) {
              return Picture::difference(pixel, background) > 60 && isOfColour(pixel, state.tint);
            });
            return rightPanel && picture.standingOut() > 100 && (!state.connected || coloured > 60);
          });
    }
  }
}

// The panel gives symbolic icons the colour of its text, which is nearly white or nearly black. An
// icon in a tone of its own looks switched off beside the others.
TEST_F(StatusNotifierMenuBarXfceTest, NamedIconHasTheColourOfThePanelsText) {
  for (const Panel::Tone tone : {Panel::Tone::Dark, Panel::Tone::Light}) {
    const bool isDark = tone == Panel::Tone::Dark;
    menuBar_.reset();
    sessionBus_ = std::make_unique<SessionBusConnection>();
    // The panel doesn't recolour icons when its own tone changes, so it has to start with it.
    panel_->setTone(tone);
    panel_.reset();
    panel_ = std::make_unique<Panel>(*session_, tone);
    menuBar_ = std::make_unique<StatusNotifierMenuBar>(
        *sessionBus_, log_, StatusNotifierMenuBar::panelTimeout, HUSHBOX_ICONS);
    show(states[0]);
    waitForPicture(
        std::string("item-tone-") + (isDark ? "dark" : "light"),
        [] { return panel_->waitForItem(); },
        [&](const Picture& picture) {
          return picture.count([&](const Pixel& pixel) {
            return isDark ? pixel[0] > 220 : pixel[0] < 70;
          }) > 60;
        });
  }
}

TEST_F(StatusNotifierMenuBarXfceTest, MenuOpensOnAClickAndShowsEveryRow) {
  const Panel::Area menu = panel_->openMenu();
  waitForPicture("menu-connected", menu,
                 [](const Picture& picture) { return picture.standingOut() > 500; });
  panel_->closeMenu();
  EXPECT_EQ(chosen_, "");
}

TEST_F(StatusNotifierMenuBarXfceTest, MenuLooksRightInEveryState) {
  struct Scene {
    const char* name;
    const State& state;
    const char* call;
    Extras extras;
  };
  const std::array scenes{
      Scene{"menu-on-a-call", states[4], "On a call — live", {.launch = true}},
      Scene{"menu-battery", states[5], "On a call — muted", {.battery = true, .launch = true}},
      Scene{"menu-without-permission", states[0], "Not on a call", {.untrusted = true}}};
  for (const Scene& scene : scenes) {
    show(scene.state);
    showRows(scene.call, scene.extras);
    const Panel::Area menu = panel_->openMenu();
    waitForPicture(scene.name, {menu.x - 40, 0, menu.width + 40, menu.y + menu.height + 8},
                   [](const Picture& picture) { return picture.standingOut() > 500; });
    panel_->closeMenu();
  }
}

TEST_F(StatusNotifierMenuBarXfceTest, OpenMenuChangesItsTextsInPlace) {
  const Panel::Area menu = panel_->openMenu();
  const Panel::Area firstRow{menu.x, menu.y + 4, menu.width, 25};
  int before = 0;
  waitForPicture("row-before", firstRow, [&](const Picture& picture) {
    return std::exchange(before, picture.standingOut()) == picture.standingOut();
  });
  showRows("On a call — muted, and for longer than before");
  waitForPicture("row-after", firstRow,
                 [&](const Picture& picture) { return picture.standingOut() > before + 100; });
  EXPECT_TRUE(panel_->menu());
}

TEST_F(StatusNotifierMenuBarXfceTest, RowsAddedWhileTheMenuIsOpenCanBeClickedLater) {
  const Panel::Area before = panel_->openMenu();
  showRows("On a call — muted", {.battery = true, .untrusted = true, .launch = true});
  panel_->closeMenu();
  // The toolkit scrolls an open menu instead of enlarging it, so it is higher only now.
  EXPECT_GT(panel_->openMenu().height, before.height + 40);
  panel_->chooseRow("Grant Accessibility…");
  waitUntil([&] { return chosen_ == "grant"; }, serverTimeout, "the click");
}

TEST_F(StatusNotifierMenuBarXfceTest, ClicksReachTheRowsUnderThePointer) {
  showRows("Not on a call", {.battery = true, .untrusted = true});
  for (const auto& [row, action] :
       std::vector<std::pair<std::string, std::string>>{{"Launch at login", "launch"},
                                                        {"Grant Accessibility…", "grant"},
                                                        {"Quit Hushbox", "quit"}}) {
    panel_->openMenu();
    panel_->chooseRow(row);
    waitUntil([&, expected = action] { return chosen_ == expected; }, serverTimeout, row);
  }
}

TEST_F(StatusNotifierMenuBarXfceTest, TextCannotBeChosen) {
  panel_->openMenu();
  panel_->clickRow("Not on a call");
  letPass(milliseconds{300});
  EXPECT_EQ(chosen_, "");
}

/// The pixels of the menu's column with the marks.
std::vector<Pixel> marks(const Picture& picture) {
  std::vector<Pixel> pixels;
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 4; x < 24; ++x) pixels.push_back(picture.at(x, y));
  return pixels;
}

TEST_F(StatusNotifierMenuBarXfceTest, ToggleShowsAndRemovesItsMarkWhileTheMenuIsOpen) {
  const Panel::Area menu = panel_->openMenu();
  panel_->movePointerAway();
  std::vector<Pixel> off;
  waitForPicture("switch-off", menu, [&](const Picture& picture) {
    // Once two pictures are the same, nothing is highlighted.
    return std::exchange(off, marks(picture)) == marks(picture);
  });
  showRows("Not on a call", {.launch = true});
  waitForPicture("switch-on", menu, [&](const Picture& picture) { return marks(picture) != off; });
  showRows("Not on a call");
  waitForPicture("switch-off", menu, [&](const Picture& picture) { return marks(picture) == off; });
  // The panel sets the mark itself; the toggle stays off, so the program must take it back.
  panel_->chooseRow("Launch at login");
  waitUntil([&] { return chosen_ == "launch"; }, serverTimeout, "the click");
  panel_->openMenu();
  panel_->movePointerAway();
  waitForPicture("switch-refused", menu,
                 [&](const Picture& picture) { return marks(picture) == off; });
}

TEST_F(StatusNotifierMenuBarXfceTest, ItemAppearsInTheNextPanelAfterACrash) {
  panel_->kill();
  panel_.reset();
  panel_ = std::make_unique<Panel>(*session_);
  panel_->waitForItem();
  panel_->openMenu();
  panel_->chooseRow("Quit Hushbox");
  waitUntil([&] { return chosen_ == "quit"; }, serverTimeout, "the click");
}

TEST_F(StatusNotifierMenuBarXfceTest, FrozenPanelBlocksNothing) {
  panel_->freeze();
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 0; i < 100; ++i) {
    show(states[static_cast<std::size_t>(i) % states.size()]);
    showRows("Call " + std::to_string(i));
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, serverTimeout);
  panel_->thaw();
}

}  // namespace
}  // namespace hushbox
