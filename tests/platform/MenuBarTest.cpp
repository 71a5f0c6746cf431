#include "platform/MenuBar.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::nullopt_t isNew = std::nullopt;

MenuRow textRow(std::string label) {
  return {.kind = MenuRow::Kind::text, .text = std::move(label)};
}

MenuRow separatorRow() {
  return {.kind = MenuRow::Kind::separator};
}

MenuRow buttonRow(std::string label) {
  return {.kind = MenuRow::Kind::button, .text = std::move(label), .enabled = true};
}

MenuRow toggleRow(std::string label, bool on) {
  return {.kind = MenuRow::Kind::toggle, .text = std::move(label), .enabled = true, .on = on};
}

TEST(ContinuedRowsTest, AllRowsAreNewInAnEmptyMenu) {
  EXPECT_THAT(continuedRows({}, {textRow("a"), buttonRow("b")}), ElementsAre(isNew, isNew));
  EXPECT_THAT(continuedRows({textRow("a")}, {}), IsEmpty());
}

TEST(ContinuedRowsTest, TextsContinueWhateverTheySayAndTogglesWhateverTheyShow) {
  EXPECT_THAT(
      continuedRows(
          {textRow("Not on a call"), separatorRow(), toggleRow("Launch", false), buttonRow("Quit")},
          {textRow("On a call"), separatorRow(), toggleRow("Launch", true), buttonRow("Quit")}),
      ElementsAre(0, 1, 2, 3));
}

TEST(ContinuedRowsTest, ButtonsAndTogglesOnlyContinueTheirOwnKindAndText) {
  EXPECT_THAT(continuedRows({buttonRow("Grant"), toggleRow("Launch", false)},
                            {buttonRow("Quit"), toggleRow("Other", false)}),
              ElementsAre(isNew, isNew));
  EXPECT_THAT(continuedRows({buttonRow("Quit")}, {toggleRow("Quit", false)}), ElementsAre(isNew));
}

TEST(ContinuedRowsTest, RowsInsertedOrRemovedLeaveTheOthers) {
  const std::vector<MenuRow> few{textRow("call"), textRow("status"),
                                 separatorRow(),  toggleRow("Launch", false),
                                 separatorRow(),  buttonRow("Quit")};
  const std::vector<MenuRow> many{textRow("call"), textRow("battery"), textRow("status"),
                                  separatorRow(),  buttonRow("Grant"), toggleRow("Launch", false),
                                  separatorRow(),  buttonRow("Quit")};
  EXPECT_THAT(continuedRows(few, many), ElementsAre(0, isNew, 1, 2, isNew, 3, 4, 5));
  EXPECT_THAT(continuedRows(many, few), ElementsAre(0, 2, 3, 5, 6, 7));
}

TEST(ContinuedRowsTest, RowsThatSwapPlacesDoNotBothContinue) {
  const auto continued =
      continuedRows({buttonRow("One"), buttonRow("Two")}, {buttonRow("Two"), buttonRow("One")});
  EXPECT_NE(continued[0].has_value(), continued[1].has_value());
}

TEST(ContinuedRowsTest, AsManyRowsAsPossibleContinue) {
  // Taking the first match for "b" would leave "a" and the separator without theirs.
  EXPECT_THAT(continuedRows({buttonRow("a"), separatorRow(), buttonRow("b")},
                            {buttonRow("b"), buttonRow("a"), separatorRow(), buttonRow("b")}),
              ElementsAre(isNew, 0, 1, 2));
}

TEST(ContinuedRowsTest, EqualRowsKeepTheirOrder) {
  EXPECT_THAT(
      continuedRows({buttonRow("Same"), buttonRow("Same")}, {buttonRow("Same"), buttonRow("Same")}),
      ElementsAre(0, 1));
}

}  // namespace
}  // namespace hushbox
