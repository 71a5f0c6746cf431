// The status item as the desktop sees it: its icon, its menu, and what a click does.

#import "platform/macos/StatusItemMenuBar.h"

#import <AppKit/AppKit.h>

#include <memory>

#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

using Titles = std::vector<std::string>;

MenuRow text(std::string words) {
  return {.kind = MenuRow::Kind::text, .text = std::move(words)};
}

MenuRow separator() {
  return {.kind = MenuRow::Kind::separator};
}

MenuRow button(
    std::string words, std::function<void()> action = [] {}) {
  return {.kind = MenuRow::Kind::button,
          .text = std::move(words),
          .enabled = true,
          .action = std::move(action)};
}

MenuRow toggle(
    std::string words, bool on, std::function<void()> action = [] {}) {
  return {.kind = MenuRow::Kind::toggle,
          .text = std::move(words),
          .enabled = true,
          .on = on,
          .action = std::move(action)};
}

Image icon(bool isTemplate = true) {
  return {.width = 18,
          .height = 18,
          .flipped = true,
          .isTemplate = isTemplate,
          .draw = [](Canvas* canvas) { return canvas != nullptr; }};
}

class StatusItemMenuBarTest : public MacFixture {
 protected:
  NSMenuItem* item(NSInteger index) { return [doubles::statusItem().menu itemAtIndex:index]; }
  std::vector<std::string> titles() {
    std::vector<std::string> titles;
    @autoreleasepool {
      for (NSMenuItem* each in doubles::statusItem().menu.itemArray)
        titles.emplace_back(each.title.UTF8String);
    }
    return titles;
  }

  StatusItemMenuBar menuBar;
};

TEST_F(StatusItemMenuBarTest, ItemHasVariableLengthAndIsRemovedOnDestruction) {
  // Another owner may keep the native item alive longer.
  NSStatusItem* kept = nil;
  {
    const StatusItemMenuBar second;
    EXPECT_EQ(doubles::statusItemCount(), 2U);
    kept = doubles::statusItem();
  }
  EXPECT_TRUE(kept != nil);
  EXPECT_EQ(doubles::statusItemCount(), 1U);
  EXPECT_EQ(doubles::statusItem().length, NSVariableStatusItemLength);
}

TEST_F(StatusItemMenuBarTest, ItemHasAnAutosaveName) {
  EXPECT_STREQ(doubles::statusItem().autosaveName.UTF8String, "Hushbox");
}

TEST_F(StatusItemMenuBarTest, ToolTipSaysTheState) {
  menuBar.setIcon(icon(), "Hushbox: On a call — live");
  EXPECT_STREQ(doubles::statusItem().button.toolTip.UTF8String, "Hushbox: On a call — live");
  menuBar.setIcon(icon(), "");
  EXPECT_STREQ(doubles::statusItem().button.toolTip.UTF8String, "");
}

TEST_F(StatusItemMenuBarTest, ActionMayRemoveItsOwnRowAndStillUseItsCaptures) {
  int calls = 0;
  menuBar.setRows({button("Quit Hushbox", [this, &calls, held = std::make_shared<int>()] {
    // Locals, so that this test reads no captures that were destroyed.
    int& count = calls;
    const std::weak_ptr<int> captures = held;
    menuBar.setRows({});
    EXPECT_FALSE(captures.expired());
    ++count;
  })});
  doubles::chooseMenuItem("Quit Hushbox");
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(doubles::liveObjects("HushboxRowAction"), 0);
}

TEST_F(StatusItemMenuBarTest, RowWithoutAnActionMayBeChosen) {
  menuBar.setRows({button("Quit Hushbox", {})});
  doubles::chooseMenuItem("Quit Hushbox");
}

TEST_F(StatusItemMenuBarTest, TextIsGreyedAndDoesNothing) {
  MenuRow row = text("Not on a call");
  row.enabled = true;
  row.action = [] { FAIL() << "A line of text was chosen."; };
  menuBar.setRows({row});
  EXPECT_FALSE(item(0).enabled);
  EXPECT_TRUE(item(0).action == nil);
  EXPECT_TRUE(item(0).target == nil);
  EXPECT_FALSE(doubles::statusItem().menu.autoenablesItems);
}

TEST_F(StatusItemMenuBarTest, KeyEquivalentUsesTheCommandKey) {
  MenuRow quit = button("Quit Hushbox");
  quit.keyEquivalent = "q";
  menuBar.setRows({quit, button("Grant Accessibility…")});
  EXPECT_STREQ(item(0).keyEquivalent.UTF8String, "q");
  EXPECT_EQ(item(0).keyEquivalentModifierMask, NSEventModifierFlagCommand);
  EXPECT_STREQ(item(1).keyEquivalent.UTF8String, "");
  menuBar.setRows({button("Quit Hushbox"), button("Grant Accessibility…")});
  EXPECT_STREQ(item(0).keyEquivalent.UTF8String, "");
}

TEST_F(StatusItemMenuBarTest, OnlyASwitchThatIsOnHasACheckMark) {
  MenuRow odd = button("Odd");
  odd.on = true;
  menuBar.setRows({toggle("Launch at login", true), odd});
  EXPECT_EQ(item(0).state, NSControlStateValueOn);
  EXPECT_EQ(item(1).state, NSControlStateValueOff);
  menuBar.setRows({toggle("Launch at login", false), odd});
  EXPECT_EQ(item(0).state, NSControlStateValueOff);
}

TEST_F(StatusItemMenuBarTest, RowThatIsNotEnabledCannotBeChosen) {
  MenuRow off = button("Later");
  off.enabled = false;
  MenuRow fixed = toggle("Launch at login", true);
  fixed.enabled = false;
  menuBar.setRows({off, fixed});
  EXPECT_FALSE(item(0).enabled);
  EXPECT_FALSE(item(1).enabled);
  int choices = 0;
  const auto choose = [&] { ++choices; };
  menuBar.setRows({button("Later", choose), toggle("Launch at login", true, choose)});
  EXPECT_TRUE(item(0).enabled);
  EXPECT_TRUE(item(1).enabled);
  doubles::chooseMenuItem(0);
  doubles::chooseMenuItem(1);
  EXPECT_EQ(choices, 2);
}

TEST_F(StatusItemMenuBarTest, EachCommandHasItsOwnLastingTarget) {
  int first = 0;
  int second = 0;
  menuBar.setRows({button("First", [&] { ++first; }), toggle("Second", false, [&] { ++second; })});
  doubles::chooseMenuItem(1);
  doubles::chooseMenuItem(1);
  doubles::chooseMenuItem(0);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 2);
}

TEST_F(StatusItemMenuBarTest, EditsRowsInPlaceWhileTheMenuIsOpen) {
  int old = 0;
  int now = 0;
  menuBar.setRows({text("Not on a call"), separator(), toggle("Launch at login", false),
                   button("Quit", [&] { ++old; })});
  doubles::openMenu();
  NSMenuItem* before[] = {item(0), item(1), item(2), item(3)};
  menuBar.setRows({text("On a call — live"), separator(), toggle("Launch at login", true),
                   button("Quit", [&] { ++now; })});
  EXPECT_EQ(titles(), Titles({"On a call — live", "", "Launch at login", "Quit"}));
  for (NSInteger i = 0; i < 4; ++i) EXPECT_TRUE(item(i) == before[i]) << i;
  EXPECT_EQ(item(2).state, NSControlStateValueOn);
  doubles::chooseMenuItem(3);
  EXPECT_EQ(old, 0);
  EXPECT_EQ(now, 1);
}

TEST_F(StatusItemMenuBarTest, CommandsKeepTheirItemsWhenOtherRowsComeAndGo) {
  menuBar.setRows({text("Call"), text("Status"), separator(), button("Grant"),
                   toggle("Launch", false), separator(), button("Quit")});
  doubles::openMenu();
  NSMenuItem* launch = item(4);
  NSMenuItem* quit = item(6);
  menuBar.setRows({text("Call"), text("Battery: 42%"), text("Status"), separator(),
                   toggle("Launch", false), separator(), button("Quit")});
  EXPECT_EQ(titles(), Titles({"Call", "Battery: 42%", "Status", "", "Launch", "", "Quit"}));
  EXPECT_TRUE(item(4) == launch);
  EXPECT_TRUE(item(6) == quit);
  menuBar.setRows({text("Call"), text("Status"), separator(), button("Grant"),
                   toggle("Launch", false), separator(), button("Quit")});
  EXPECT_EQ(titles(), Titles({"Call", "Status", "", "Grant", "Launch", "", "Quit"}));
  EXPECT_TRUE(item(4) == launch);
  EXPECT_TRUE(item(6) == quit);
}

TEST_F(StatusItemMenuBarTest, ItemOfACommandNeverBecomesAnother) {
  menuBar.setRows({button("Grant")});
  NSMenuItem* grant = item(0);
  menuBar.setRows({button("Quit")});
  EXPECT_EQ(titles(), Titles({"Quit"}));
  EXPECT_FALSE(item(0) == grant);
  EXPECT_STREQ(grant.title.UTF8String, "Grant");
}

TEST_F(StatusItemMenuBarTest, RowsMayBecomeFewerOrNone) {
  menuBar.setRows({text("Call"), separator(), button("Quit"), separator()});
  menuBar.setRows({text("Call")});
  EXPECT_EQ(titles(), Titles({"Call"}));
  menuBar.setRows({});
  EXPECT_EQ(titles(), Titles({}));
}

TEST_F(StatusItemMenuBarTest, OnlyLocalizedRowsAreLookedUpInTheBundle) {
  doubles::setLocalization("Not on a call", "Kein Anruf");
  doubles::setLocalization("Quit", "Beenden");
  MenuRow call = text("Not on a call");
  call.localized = true;
  MenuRow quit = button("Quit");
  quit.localized = true;
  MenuRow untranslated = text("Battery: 42%");
  untranslated.localized = true;
  menuBar.setRows({call, untranslated, text("Not on a call"), quit});
  EXPECT_EQ(titles(), Titles({"Kein Anruf", "Battery: 42%", "Not on a call", "Beenden"}));
}

TEST_F(StatusItemMenuBarTest, OnlyAnUntintedIconIsATemplate) {
  menuBar.setIcon(icon(true), "Live");
  EXPECT_TRUE(doubles::isTemplate(doubles::statusItem().button.image));
  menuBar.setIcon(icon(false), "Live");
  EXPECT_FALSE(doubles::isTemplate(doubles::statusItem().button.image));
}

TEST_F(StatusItemMenuBarTest, IconHasItsSizeAndOrientation) {
  Image image = icon();
  image.height = 16;
  menuBar.setIcon(image, "Live");
  NSImage* native = doubles::statusItem().button.image;
  EXPECT_EQ(doubles::size(native).width, 18);
  EXPECT_EQ(doubles::size(native).height, 16);
  EXPECT_TRUE(doubles::isFlipped(native));
  image.flipped = false;
  menuBar.setIcon(image, "Live");
  EXPECT_FALSE(doubles::isFlipped(doubles::statusItem().button.image));
  EXPECT_TRUE(doubles::isTemplate(doubles::statusItem().button.image));
}

TEST_F(StatusItemMenuBarTest, EachRenderingDrawsTheIconAgain) {
  auto drawings = std::make_shared<int>(0);
  {
    Image image = icon();
    image.draw = [drawings](Canvas* canvas) {
      ++*drawings;
      canvas->setAlpha(0.4);
      return true;
    };
    menuBar.setIcon(image, "Live");
  }
  EXPECT_EQ(*drawings, 0);
  EXPECT_TRUE(doubles::renderIcon());
  EXPECT_TRUE(doubles::renderIcon());
  EXPECT_EQ(*drawings, 2);
  menuBar.setIcon(icon(), "Live");
  EXPECT_EQ(drawings.use_count(), 1);
}

TEST_F(StatusItemMenuBarTest, RenderingReturnsTheResultOfTheDrawing) {
  Image image = icon();
  image.draw = [](Canvas*) { return false; };
  menuBar.setIcon(image, "Live");
  EXPECT_FALSE(doubles::render(doubles::statusItem().button.image));
  image.draw = nullptr;
  menuBar.setIcon(image, "Live");
  EXPECT_FALSE(doubles::render(doubles::statusItem().button.image));
}

TEST_F(StatusItemMenuBarTest, WithoutAContextTheCanvasIsNull) {
  auto seen = std::make_shared<std::vector<bool>>();
  Image image = icon();
  image.draw = [seen](Canvas* canvas) {
    seen->push_back(canvas != nullptr);
    return canvas != nullptr;
  };
  menuBar.setIcon(image, "Live");
  EXPECT_FALSE(doubles::renderWithoutContext(doubles::statusItem().button.image));
  EXPECT_TRUE(doubles::render(doubles::statusItem().button.image));
  EXPECT_EQ(*seen, (std::vector{false, true}));
}

TEST_F(StatusItemMenuBarTest, DescriptionIsTheAccessibilityLabel) {
  menuBar.setIcon(icon(), "Hushbox: On a call — muted");
  EXPECT_EQ(doubles::accessibilityLabel(), "Hushbox: On a call — muted");
  menuBar.setIcon(icon(), "Hushbox: Not on a call");
  EXPECT_EQ(doubles::accessibilityLabel(), "Hushbox: Not on a call");
}

TEST_F(StatusItemMenuBarTest, ReleasesFormerRowsAndIcons) {
  const auto round = [this] {
    menuBar.setIcon(icon(), "Live");
    menuBar.setRows({text("Call"), separator(), button("Grant"), toggle("Launch", true)});
    menuBar.setRows({text("Call"), text("Battery"), toggle("Launch", false), button("Quit")});
    menuBar.setRows({text("Call")});
  };
  round();
  const auto before = doubles::liveObjects();
  for (int i = 0; i < 20; ++i) round();
  EXPECT_EQ(doubles::liveObjects(), before);
}

TEST_F(StatusItemMenuBarTest, ReleasesTheActionOfARemovedRow) {
  auto held = std::make_shared<int>();
  menuBar.setRows({button("Grant", [held] {})});
  EXPECT_GT(held.use_count(), 1);
  doubles::chooseMenuItem("Grant");
  menuBar.setRows({button("Quit")});
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace hushbox
