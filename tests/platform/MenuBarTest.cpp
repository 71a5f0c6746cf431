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
using Kind = MenuRow::Kind;

constexpr std::nullopt_t isNew = std::nullopt;

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

TEST(ContinuedRowsTest, AllRowsAreNewInAnEmptyMenu) {
  EXPECT_THAT(continuedRows({}, {text("a"), button("b")}), ElementsAre(isNew, isNew));
  EXPECT_THAT(continuedRows({text("a")}, {}), IsEmpty());
}

TEST(ContinuedRowsTest, TextsContinueWhateverTheySayAndTogglesWhateverTheyShow) {
  EXPECT_THAT(
      continuedRows({text("Not on a call"), separator(), toggle("Launch", false), button("Quit")},
                    {text("On a call"), separator(), toggle("Launch", true), button("Quit")}),
      ElementsAre(0, 1, 2, 3));
}

TEST(ContinuedRowsTest, ButtonsAndTogglesOnlyContinueTheirOwnKindAndText) {
  EXPECT_THAT(continuedRows({button("Grant"), toggle("Launch", false)},
                            {button("Quit"), toggle("Other", false)}),
              ElementsAre(isNew, isNew));
  EXPECT_THAT(continuedRows({button("Quit")}, {toggle("Quit", false)}), ElementsAre(isNew));
}

TEST(ContinuedRowsTest, RowsInsertedOrRemovedLeaveTheOthers) {
  const std::vector<MenuRow> few{text("call"), text("status"), separator(), toggle("Launch", false),
                                 separator(),  button("Quit")};
  const std::vector<MenuRow> many{text("call"), text("battery"), text("status"),
                                  separator(),  button("Grant"), toggle("Launch", false),
                                  separator(),  button("Quit")};
  EXPECT_THAT(continuedRows(few, many), ElementsAre(0, isNew, 1, 2, isNew, 3, 4, 5));
  EXPECT_THAT(continuedRows(many, few), ElementsAre(0, 2, 3, 5, 6, 7));
}

TEST(ContinuedRowsTest, RowsThatSwapPlacesDoNotBothContinue) {
  const auto continued =
      continuedRows({button("One"), button("Two")}, {button("Two"), button("One")});
  EXPECT_NE(continued[0].has_value(), continued[1].has_value());
}

TEST(ContinuedRowsTest, AsManyRowsAsPossibleContinue) {
  // Taking the first match for "b" would leave "a" and the separator without theirs.
  EXPECT_THAT(continuedRows({button("a"), separator(), button("b")},
                            {button("b"), button("a"), separator(), button("b")}),
              ElementsAre(isNew, 0, 1, 2));
}

TEST(ContinuedRowsTest, EqualRowsKeepTheirOrder) {
  EXPECT_THAT(continuedRows({button("Same"), button("Same")}, {button("Same"), button("Same")}),
              ElementsAre(0, 1));
}

}  // namespace
}  // namespace hushbox
