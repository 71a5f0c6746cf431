#include "platform/linux/menubar/MenuItems.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace hushbox {
namespace {

using testing::ElementsAre;
using Kind = MenuRow::Kind;

MenuRow text(std::string label) {
  return {.kind = Kind::text, .text = std::move(label)};
}

MenuRow separator() {
  return {.kind = Kind::separator};
}

MenuRow button(std::string label) {
  return {.kind = Kind::button, .text = std::move(label), .enabled = true};
}

MenuRow toggle(std::string label, bool on) {
  return {.kind = Kind::toggle, .text = std::move(label), .enabled = true, .on = on};
}

class MenuItemsTest : public testing::Test {
 protected:
  std::vector<int> show(std::vector<MenuRow> rows) {
    items_.replace(std::move(rows));
    std::vector<int> ids;
    for (const MenuItem& item : items_.all()) ids.push_back(item.id);
    return ids;
  }

  MenuItems items_;
};

TEST_F(MenuItemsTest, RowsAreNumberedFromOne) {
  EXPECT_THAT(show({text("a"), separator(), button("b")}), ElementsAre(1, 2, 3));
}

TEST_F(MenuItemsTest, RowsThatContinueKeepTheirNumbers) {
  show({text("Not on a call"), separator(), toggle("Launch", false), button("Quit")});
  EXPECT_THAT(show({text("On a call"), separator(), toggle("Launch", true), button("Quit")}),
              ElementsAre(1, 2, 3, 4));
}

TEST_F(MenuItemsTest, InsertedRowsLeaveTheOthersTheirNumbers) {
  show({text("call"), text("status"), separator(), toggle("Launch", false), separator(),
        button("Quit")});
  EXPECT_THAT(show({text("call"), text("Battery"), text("status"), separator(), button("Grant"),
                    toggle("Launch", false), separator(), button("Quit")}),
              ElementsAre(1, 7, 2, 3, 8, 4, 5, 6));
  EXPECT_THAT(show({text("call"), text("status"), separator(), toggle("Launch", false), separator(),
                    button("Quit")}),
              ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(MenuItemsTest, NumbersOfRemovedRowsAreNeverReused) {
  show({button("Grant"), button("Quit")});
  show({button("Quit")});
  EXPECT_EQ(items_.find(1), nullptr);
  EXPECT_THAT(show({button("Grant"), button("Quit")}), ElementsAre(3, 2));
  show({});
  EXPECT_THAT(show({button("Grant")}), ElementsAre(4));
}

TEST_F(MenuItemsTest, NumbersNeverPassToAnotherButtonOrToggle) {
  show({button("Grant"), toggle("Launch", false)});
  EXPECT_THAT(show({button("Quit"), toggle("Other", false)}), ElementsAre(3, 4));
  EXPECT_THAT(show({toggle("Quit", false), button("Other")}), ElementsAre(5, 6));
}

TEST_F(MenuItemsTest, EqualButtonsKeepTheirOrder) {
  show({button("Same"), button("Same")});
  EXPECT_THAT(show({button("Same"), button("Same")}), ElementsAre(1, 2));
}

TEST_F(MenuItemsTest, RowsThatChangePlacesDoNotSwapNumbers) {
  show({button("One"), button("Two")});
  const std::vector<int> ids = show({button("Two"), button("One")});
  for (const MenuItem& item : items_.all()) {
    if (item.id > 2) continue;
    EXPECT_EQ(item.row.text, item.id == 1 ? "One" : "Two");
  }
  EXPECT_NE(ids[0], ids[1]);
}

TEST_F(MenuItemsTest, ReplaceReturnsThePreviousRows) {
  show({text("before")});
  const std::vector<MenuItem> before = items_.replace({text("after")});
  ASSERT_EQ(before.size(), 1U);
  EXPECT_EQ(before[0].row.text, "before");
  EXPECT_EQ(items_.find(1)->row.text, "after");
}

}  // namespace
}  // namespace hushbox
