#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/contract/Contract.h"
#include "tests/contract/MenuBarDriver.h"

namespace hushbox {

/// What every MenuBar does.
class MenuBarContract : public Contract<MenuBarDriver> {
 protected:
  using Shown = MenuBarDriver::Shown;

  static MenuRow text(std::string words) {
    return {.kind = MenuRow::Kind::text, .text = std::move(words)};
  }
  static MenuRow separator() { return {.kind = MenuRow::Kind::separator}; }
  static MenuRow button(std::string words, std::function<void()> action) {
    return {.kind = MenuRow::Kind::button,
            .text = std::move(words),
            .enabled = true,
            .action = std::move(action)};
  }
  static MenuRow toggle(std::string words, bool on, std::function<void()> action) {
    return {.kind = MenuRow::Kind::toggle,
            .text = std::move(words),
            .enabled = true,
            .on = on,
            .action = std::move(action)};
  }

  static Image icon() {
    return {
        .width = 18, .height = 18, .flipped = true, .isTemplate = true, .draw = [](Canvas* canvas) {
          return canvas != nullptr;
        }};
  }

  void show(std::vector<MenuRow> rows, const std::string& description = "Live") {
    driver().menuBar().setIcon(icon(), description);
    driver().menuBar().setRows(std::move(rows));
  }

  void expectShown(const std::vector<Shown>& expected) {
    driver().waitFor([&] { return driver().shown() == expected; });
    EXPECT_TRUE(driver().shown() == expected);
  }
};

TEST_P(MenuBarContract, RowsAreShownInOrderWithTheirKinds) {
  show({text("Not on a call"), separator(), button("Quit Hushbox", [] {}),
        toggle("Launch at login", true, [] {}), toggle("Off", false, [] {})});
  expectShown({{.text = "Not on a call"},
               {.text = "", .separator = true},
               {.text = "Quit Hushbox", .enabled = true},
               {.text = "Launch at login", .enabled = true, .checkable = true, .checked = true},
               {.text = "Off", .enabled = true, .checkable = true}});
}

TEST_P(MenuBarContract, TextIsShownUnchanged) {
  const std::string words = "10:42  Mute → Teams_now & __then__ <b>";
  show({text(words)});
  expectShown({{.text = words}});
}

TEST_P(MenuBarContract, RowsAreReplacedInPlace) {
  show({text("Not on a call"), button("Quit Hushbox", [] {})});
  expectShown({{.text = "Not on a call"}, {.text = "Quit Hushbox", .enabled = true}});
  driver().menuBar().setRows(
      {text("On a call — live"), text("Battery: 62%"), button("Quit Hushbox", [] {})});
  expectShown({{.text = "On a call — live"},
               {.text = "Battery: 62%"},
               {.text = "Quit Hushbox", .enabled = true}});
}

TEST_P(MenuBarContract, ChoosingAButtonRunsItsActionOnceOnTheMainThread) {
  int chosen = 0;
  int others = 0;
  show({button("Grant", [&] { ++others; }), button("Quit Hushbox", [&] {
          EXPECT_TRUE(driver().isMainThread());
          ++chosen;
        })});
  ASSERT_TRUE(driver().waitFor([&] { return driver().shown().size() == 2; }));
  driver().choose("Quit Hushbox");
  ASSERT_TRUE(driver().waitFor([&] { return chosen > 0; }));
  driver().letPass(TimeInterval(0.1));
  EXPECT_EQ(chosen, 1);
  EXPECT_EQ(others, 0);
}

TEST_P(MenuBarContract, ChoosingAToggleRunsItsActionWithoutChangingTheMark) {
  int chosen = 0;
  show({toggle("Launch at login", false, [&] { ++chosen; })});
  ASSERT_TRUE(driver().waitFor([&] { return driver().shown().size() == 1; }));
  driver().choose("Launch at login");
  ASSERT_TRUE(driver().waitFor([&] { return chosen > 0; }));
  expectShown({{.text = "Launch at login", .enabled = true, .checkable = true}});
}

TEST_P(MenuBarContract, TextCannotBeChosen) {
  bool chosen = false;
  MenuRow row = text("Not on a call");
  row.action = [&] { chosen = true; };
  show({row});
  ASSERT_TRUE(driver().waitFor([&] { return driver().shown().size() == 1; }));
  driver().choose("Not on a call");
  driver().letPass(TimeInterval(0.2));
  EXPECT_FALSE(chosen);
}

TEST_P(MenuBarContract, ActionMayReplaceTheRows) {
  show({button("Grant", [&] { driver().menuBar().setRows({text("Granted")}); })});
  ASSERT_TRUE(driver().waitFor([&] { return driver().shown().size() == 1; }));
  driver().choose("Grant");
  expectShown({{.text = "Granted"}});
}

TEST_P(MenuBarContract, IconHasADescription) {
  show({text("On a call — live")}, "Live");
  EXPECT_TRUE(
      driver().waitFor([&] { return driver().description().find("Live") != std::string::npos; }));
  driver().menuBar().setIcon(icon(), "Muted");
  EXPECT_TRUE(
      driver().waitFor([&] { return driver().description().find("Muted") != std::string::npos; }));
}

}  // namespace hushbox
