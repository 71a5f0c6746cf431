#include "platform/linux/menubar/DBusMenu.h"

#include <gmock/gmock.h>

#include <functional>
#include <future>
#include <string>
#include <vector>

#include "tests/platform/linux/fixtures/PanelFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Kind = MenuRow::Kind;

constexpr const char* invalidArguments = "org.freedesktop.DBus.Error.InvalidArgs";
constexpr const char* unknownMethod = "org.freedesktop.DBus.Error.UnknownMethod";

MenuRow text(std::string label) {
  return {.kind = Kind::text, .text = std::move(label)};
}

MenuRow button(std::string label, std::function<void()> action = {}) {
  return {
      .kind = Kind::button, .text = std::move(label), .enabled = true, .action = std::move(action)};
}

MenuRow toggle(bool on, std::function<void()> action = {}) {
  return {.kind = Kind::toggle,
          .text = "Launch at login",
          .enabled = true,
          .on = on,
          .action = std::move(action)};
}

class DBusMenuTest : public PanelFixture {
 protected:
  DBusMenuTest() { start(); }

  void show(std::vector<MenuRow> rows) {
    menuBar_->setRows(std::move(rows));
    client_->takeSignals();
  }
  std::string propertiesOf(int id) {
    return ofMenu("GetGroupProperties", g_variant_new_parsed("([%i], @as [])", id)).text();
  }
};

TEST_F(DBusMenuTest, LayoutShowsTheRowsUnderTheRoot) {
  MenuRow quit = button("Quit Hushbox");
  quit.keyEquivalent = "q";
  show({text("On a call — live"), {.kind = Kind::separator}, toggle(true), quit});
  EXPECT_EQ(ofMenu("GetLayout", g_variant_new_parsed("(0, -1, @as [])")).text(),
            "(2, (0, {'children-display': <'submenu'>}, ["
            "<(1, {'enabled': <false>, 'label': <'On a call — live'>}, @av [])>, "
            "<(2, {'type': <'separator'>}, @av [])>, "
            "<(3, {'enabled': <true>, 'label': <'Launch at login'>, 'toggle-state': <1>, "
            "'toggle-type': <'checkmark'>}, @av [])>, "
            "<(4, {'enabled': <true>, 'label': <'Quit Hushbox'>, "
            "'shortcut': <[['Control', 'q']]>}, @av [])>]))");
}

TEST_F(DBusMenuTest, LayoutHasTheRequestedDepthAndProperties) {
  show({text("one"), text("two")});
  const auto layout = [&](const char* arguments) {
    return ofMenu("GetLayout", g_variant_new_parsed(arguments)).text();
  };
  EXPECT_EQ(layout("(0, 0, @as [])"), "(2, (0, {'children-display': <'submenu'>}, []))");
  EXPECT_EQ(layout("(0, 1, ['label'])"),
            "(2, (0, {}, [<(1, {'label': <'one'>}, @av [])>, "
            "<(2, {'label': <'two'>}, @av [])>]))");
  EXPECT_EQ(layout("(2, -1, ['label'])"), "(2, (2, {'label': <'two'>}, []))");
}

TEST_F(DBusMenuTest, EmptyMenuHasARootAndNoRows) {
  EXPECT_EQ(ofMenu("GetLayout", g_variant_new_parsed("(0, -1, @as [])")).text(),
            "(1, (0, {'children-display': <'submenu'>}, []))");
  EXPECT_EQ(ofMenu("AboutToShow", g_variant_new_parsed("(0,)")).text(), "(false,)");
}

TEST_F(DBusMenuTest, PropertiesOfSeveralItemsComeInOneReply) {
  show({text("one"), text("two")});
  EXPECT_EQ(ofMenu("GetGroupProperties", g_variant_new_parsed("([2, 99, 1], ['label'])")).text(),
            "([(2, {'label': <'two'>}), (1, {'label': <'one'>})],)");
  EXPECT_EQ(ofMenu("GetGroupProperties", g_variant_new_parsed("(@ai [], ['label'])")).text(),
            "([(0, {}), (1, {'label': <'one'>}), (2, {'label': <'two'>})],)");
  EXPECT_EQ(ofMenu("GetProperty", g_variant_new_parsed("(2, 'label')")).text(), "(<'two'>,)");
}

TEST_F(DBusMenuTest, TextsAreEscaped) {
  show({text("under_score"), text(std::string("a\0b\nc\xff\xe2\x80\xae", 10)), text("")});
  EXPECT_THAT(propertiesOf(1), HasSubstr("under__score"));
  // GVariant prints each backslash twice.
  EXPECT_THAT(propertiesOf(2), HasSubstr("ab\\\\nc\xEF\xBF\xBD\\\\u{202E}"));
  EXPECT_THAT(propertiesOf(3), HasSubstr("'label': <''>"));
}

TEST_F(DBusMenuTest, RefusesUnknownItemsAndInvalidArguments) {
  show({text("one")});
  const auto refused = [&](const char* method, const char* arguments) {
    return ofMenu(method, g_variant_new_parsed(arguments)).error;
  };
  EXPECT_EQ(refused("GetLayout", "(77, -1, @as [])"), invalidArguments);
  EXPECT_EQ(refused("GetLayout", "(-1, -1, @as [])"), invalidArguments);
  EXPECT_EQ(refused("GetProperty", "(77, 'label')"), invalidArguments);
  EXPECT_EQ(refused("GetProperty", "(1, 'toggle-state')"), invalidArguments);
  EXPECT_EQ(refused("Event", "(77, 'clicked', <0>, @u 0)"), invalidArguments);
  EXPECT_EQ(refused("EventGroup", "([(77, 'clicked', <0>, @u 0)],)"), invalidArguments);
  EXPECT_EQ(refused("AboutToShow", "(77,)"), invalidArguments);
  EXPECT_EQ(refused("GetLayout", "('zero',)"), invalidArguments);
  EXPECT_EQ(refused("EventGroup", "(['clicked'],)"), invalidArguments);
  EXPECT_EQ(refused("Explode", "()"), unknownMethod);
  EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(DBusMenuTest, GroupCallsReturnTheUnknownItems) {
  show({text("one")});
  EXPECT_EQ(ofMenu("EventGroup", g_variant_new_parsed(
                                     "([(1, 'opened', <0>, @u 0), (77, 'clicked', <0>, @u 0)],)"))
                .text(),
            "([77],)");
  EXPECT_EQ(ofMenu("EventGroup", g_variant_new_parsed("(@a(isvu) [],)")).text(), "([],)");
  EXPECT_EQ(ofMenu("AboutToShowGroup", g_variant_new_parsed("([0, 1, 77],)")).text(), "([], [77])");
}

TEST_F(DBusMenuTest, InterfaceHasItsProperties) {
  const auto property = [&](const char* name) {
    return client_->property(name_, "/MenuBar", menu, name).text();
  };
  EXPECT_EQ(property("Version"), "3");
  EXPECT_EQ(property("Status"), "'normal'");
  EXPECT_EQ(property("TextDirection"), "'ltr'");
  EXPECT_EQ(property("IconThemePath"), "[]");
}

TEST_F(DBusMenuTest, ClickRunsTheActionAfterThePanelHasItsReply) {
  bool answered = false, ran = false;
  // The panel's thread gets its reply although the action blocks this one.
  std::future<void> panel;
  show({button("Press", [&] {
    answered = panel.wait_for(std::chrono::seconds{20}) == std::future_status::ready;
    ran = true;
  })});
  panel = std::async(std::launch::async, [&] {
    const rehearsal::BusConnection bus(session_.busAddress());
    bus.call(name_, "/MenuBar", menu, "Event", g_variant_new_parsed("(1, 'clicked', <''>, @u 0)"));
  });
  rehearsal::waitUntil([&] { return ran; }, rehearsal::serverTimeout, "the action");
  EXPECT_TRUE(answered);
}

TEST_F(DBusMenuTest, OnlyClicksOnEnabledRowsHaveAnEffect) {
  int runs = 0;
  const auto count = [&] { ++runs; };
  MenuRow line = text("text");
  line.enabled = true;
  MenuRow disabled = button("disabled", count);
  disabled.enabled = false;
  show({line, disabled, button("no action"), button("enabled", count)});
  for (const int id : {0, 1, 2, 3}) EXPECT_EQ(click(id).error, "");
  for (const char* event : {"hovered", "opened", "closed", "x-else"})
    ofMenu("Event", g_variant_new_parsed("(4, %s, <0>, @u 0)", event));
  client_->takeSignals();
  EXPECT_EQ(runs, 0);
  click(4);
  rehearsal::waitUntil([&] { return runs == 1; }, rehearsal::serverTimeout, "the action");
}

TEST_F(DBusMenuTest, GroupOfClicksRunsTheActionsInOrder) {
  std::vector<int> order;
  show({button("one", [&] { order.push_back(1); }), button("two", [&] { order.push_back(2); })});
  ofMenu("EventGroup", g_variant_new_parsed("([(2, 'clicked', <0>, @u 0), (99, 'clicked', <0>, @u "
                                            "0), (1, 'clicked', <0>, @u 0)],)"));
  rehearsal::waitUntil([&] { return order.size() == 2; }, rehearsal::serverTimeout, "both actions");
  EXPECT_THAT(order, ElementsAre(2, 1));
}

TEST_F(DBusMenuTest, ClickOnARemovedRowReachesNoOther) {
  int granted = 0, quit = 0;
  show({button("Grant", [&] { ++granted; }), button("Quit", [&] { ++quit; })});
  show({button("Quit", [&] { ++quit; })});
  EXPECT_EQ(click(1).error, invalidArguments);
  show({button("Grant", [&] { ++granted; }), button("Quit", [&] { ++quit; })});
  EXPECT_EQ(click(1).error, invalidArguments);
  click(2);
  rehearsal::waitUntil([&] { return quit == 1; }, rehearsal::serverTimeout, "the action");
  EXPECT_EQ(granted, 0);
}

TEST_F(DBusMenuTest, ClickRunsTheActionOfTheCurrentRow) {
  std::string ran;
  show({button("Press", [&] { ran = "old"; })});
  show({button("Press", [&] { ran = "new"; })});
  click(1);
  rehearsal::waitUntil([&] { return !ran.empty(); }, rehearsal::serverTimeout, "the action");
  EXPECT_EQ(ran, "new");
}

TEST_F(DBusMenuTest, ActionMayChangeTheRowsOrDestroyTheMenuBar) {
  bool ran = false;
  show({button("Change", [&] { menuBar_->setRows({text("changed")}); }), toggle(false, [&] {
          menuBar_.reset();
          ran = true;
        })});
  click(2);
  rehearsal::waitUntil([&] { return ran; }, rehearsal::serverTimeout, "the end");
  start();
  show({button("Change", [&] { menuBar_->setRows({text("changed")}); })});
  click(1);
  rehearsal::waitUntil([&] { return propertiesOf(2).find("changed") != std::string::npos; },
                       rehearsal::serverTimeout, "the change");
}

TEST_F(DBusMenuTest, UnchangedRowsSendNoSignal) {
  const auto rows = [] { return std::vector{text("one"), toggle(true, [] {}), button("two")}; };
  show(rows());
  menuBar_->setRows(rows());
  EXPECT_THAT(client_->takeSignals(), IsEmpty());
}

TEST_F(DBusMenuTest, ChangedTextSendsOnlyThatProperty) {
  show({text("one"), toggle(false)});
  menuBar_->setRows({text("other"), toggle(false)});
  EXPECT_THAT(client_->takeSignals(),
              ElementsAre("ItemsPropertiesUpdated ([(1, {'label': <'other'>})], [])"));
  menuBar_->setRows({text("other"), toggle(true)});
  EXPECT_THAT(client_->takeSignals(),
              ElementsAre("ItemsPropertiesUpdated ([(2, {'toggle-state': <1>})], [])"));
}

TEST_F(DBusMenuTest, RemovedPropertyIsReported) {
  MenuRow quit = button("Quit");
  quit.keyEquivalent = "q";
  show({quit});
  menuBar_->setRows({button("Quit")});
  EXPECT_THAT(client_->takeSignals(),
              ElementsAre("ItemsPropertiesUpdated ([], [(1, ['shortcut'])])"));
}

TEST_F(DBusMenuTest, AddedAndRemovedRowsChangeTheLayout) {
  show({text("one")});
  menuBar_->setRows({text("one"), text("Battery: 42%")});
  EXPECT_THAT(client_->takeSignals(), ElementsAre("LayoutUpdated (3, 0)"));
  menuBar_->setRows({text("uno")});
  EXPECT_THAT(client_->takeSignals(),
              ElementsAre(StartsWith("ItemsPropertiesUpdated"), "LayoutUpdated (4, 0)"));
  EXPECT_THAT(rowIds(), ElementsAre(1));
}

TEST_F(DBusMenuTest, ToggleThatDoesNotChangeSendsItsMarkAgain) {
  bool ran = false;
  show({toggle(false, [&] { ran = true; })});
  click(1);
  rehearsal::waitUntil([&] { return ran; }, rehearsal::serverTimeout, "the action");
  EXPECT_THAT(client_->takeSignals(), ElementsAre(HasSubstr("'toggle-state': <0>")));
}

TEST_F(DBusMenuTest, LongMenusAndTextsAreComplete) {
  std::vector<MenuRow> rows;
  for (int i = 0; i < 200; ++i) rows.push_back(text(std::string(5000, 'x')));
  show(rows);
  EXPECT_EQ(rowIds().size(), 200U);
  EXPECT_THAT(propertiesOf(200), HasSubstr(std::string(5000, 'x')));
}

}  // namespace
}  // namespace hushbox
