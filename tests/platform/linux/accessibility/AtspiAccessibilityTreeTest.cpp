#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/linux/fixtures/AccessibleProgramsFixture.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Programs as other toolkits, other versions and malicious authors make them.
using AtspiAccessibilityTreeTest = AccessibleProgramsFixture;

TEST_F(AtspiAccessibilityTreeTest, ProgramThatCannotSearchIsWalked) {
  const auto client = program("Microsoft Teams", "GTK");
  client->setCollection(false);
  client->setAttributesInProperties(false);
  client->put("/mic", button(label, "microphone-button"));
  client->put("/text", {.role = 61, .name = "Mute mic"});
  client->put("/bar", {.role = 63, .children = {"/text", "/mic"}});
  Object frame{.role = 23, .name = "Weekly sync"};
  for (int i = 0; i < 80; ++i) {
    const std::string path = "/panel" + std::to_string(i);
    client->put(path, {.role = 39, .name = "Panel"});
    frame.children.push_back(path);
  }
  frame.children.push_back("/bar");
  client->put("/frame", frame);
  client->put(root, {.role = 75, .children = {"/frame"}});
  ASSERT_TRUE(readsLabel());
  EXPECT_EQ(reader_.text(reader_.button(), "AXDOMIdentifier"), "microphone-button");
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(client->performed(), ElementsAre("/mic 0"));
}

TEST_F(AtspiAccessibilityTreeTest, WalkEndsInATreeWithACycle) {
  const auto client = program("Microsoft Teams", "GTK");
  client->setCollection(false);
  client->put("/frame", {.role = 23, .children = {"/frame", root}});
  client->put(root, {.role = 75, .children = {"/frame", root}});
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
}

TEST_F(AtspiAccessibilityTreeTest, PressesTheActionOfThatNameWhateverItsIndex) {
  Object box{.role = 7, .name = label, .actions = {"showContextMenu", "Toggle"}};
  const auto teams = browser({{"/b", box}});
  ASSERT_TRUE(readsLabel());
  EXPECT_EQ(reader_.text(reader_.button(), "AXRole"), "AXCheckBox");
  EXPECT_EQ(reader_.text(reader_.application(), "AXRole"), "AXApplication");
  EXPECT_EQ(reader_.text(reader_.application(), "AXTitle"), "Microsoft Teams");
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(teams->performed(), ElementsAre("/b 1"));
}

TEST_F(AtspiAccessibilityTreeTest, ReturnsActionUnsupportedForAButtonWithoutAPress) {
  Object menu = button(label);
  menu.actions = {"showContextMenu"};
  const auto teams = browser({{"/b", menu}});
  ASSERT_TRUE(readsLabel());
  EXPECT_EQ(reader_.press(), accessibility::actionUnsupported);
  EXPECT_EQ(tree_.performAction(reader_.button(), "AXShowMenu"), accessibility::actionUnsupported);
  EXPECT_THAT(teams->performed(), IsEmpty());
}

TEST_F(AtspiAccessibilityTreeTest, ReturnsFailureForARefusedPress) {
  Object refusing = button(label);
  refusing.takesActions = false;
  const auto teams = browser({{"/b", refusing}});
  ASSERT_TRUE(readsLabel());
  EXPECT_EQ(reader_.press(), accessibility::failure);
}

TEST_F(AtspiAccessibilityTreeTest, DestroyedObjectIsInvalidAndIsNotPressed) {
  const auto teams = browser({{"/b", button(label)}});
  ASSERT_TRUE(readsLabel());
  const auto before = reader_.button();
  // Still answering, as toolkits leave it for a while.
  teams->put("/b", {.role = 0, .actions = {"press"}});
  AttributeValue value;
  reader_.application();
  EXPECT_EQ(tree_.copyAttributeValue(before, "AXRole", value), accessibility::invalidElement);
  EXPECT_EQ(tree_.performAction(before, "AXPress"), accessibility::invalidElement);
  teams->remove("/b");
  reader_.application();
  EXPECT_EQ(tree_.copyAttributeValue(before, "AXRole", value), accessibility::invalidElement);
  EXPECT_EQ(tree_.performAction(before, "AXPress"), accessibility::invalidElement);
  EXPECT_THAT(teams->performed(), IsEmpty());
}

TEST_F(AtspiAccessibilityTreeTest, ReturnsNoValueForEmptyAndOverlongTexts) {
  Object object = button("", "microphone-button");
  object.description = std::string(5000, 'M');
  const auto teams = browser({{"/b", object}});
  const auto controls = reader_.children(reader_.children(reader_.application()).at(0));
  ASSERT_EQ(controls.size(), 1U);
  AttributeValue value;
  for (const char* attribute : {"AXDescription", "AXHelp", "AXTitle", "AXNoSuchAttribute"})
    EXPECT_EQ(tree_.copyAttributeValue(controls[0], attribute, value), accessibility::noValue)
        << attribute;
  EXPECT_EQ(reader_.text(controls[0], "AXDOMIdentifier"), "microphone-button");
}

TEST_F(AtspiAccessibilityTreeTest, ControlsOfMediaPlayersAreNotOffered) {
  const auto teams = browser({{"/player", {.role = 107, .children = {"/panel"}}},
                              {"/sound", {.role = 106, .children = {"/unmute"}}},
                              {"/toolbar", {.role = 63, .children = {"/mic"}}}});
  teams->put("/panel", {.role = 39, .children = {"/mute"}});
  teams->put("/mute", button("mute"));
  teams->put("/unmute", button("unmute"));
  teams->put("/mic", button(label));
  EXPECT_TRUE(readsLabel());
  EXPECT_THAT(reader_.controls(), ElementsAre(label));
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(teams->performed(), ElementsAre("/mic 0"));
}

TEST_F(AtspiAccessibilityTreeTest, WalkLeavesOutControlsOfMediaPlayers) {
  const auto client = program("Microsoft Teams", "GTK");
  client->setCollection(false);
  client->put("/mute", button("Mute"));
  client->put("/player", {.role = 107, .children = {"/mute"}});
  client->put("/bar", {.role = 63, .children = {"/panel"}});
  client->put("/panel", {.role = 39, .children = {"/mic"}});
  client->put("/mic", button(label));
  client->put("/frame", {.role = 23, .children = {"/player", "/bar"}});
  client->put(root, {.role = 75, .children = {"/frame"}});
  EXPECT_TRUE(readsLabel());
}

TEST_F(AtspiAccessibilityTreeTest, OffersMuteControlsInBreadthFirstOrder) {
  const auto teams = browser({{"/list", {.role = 31, .parent = "/document", .children = {"/row"}}},
                              {"/toolbar", {.role = 63, .parent = "/document"}}});
  const auto put = [&](const std::string& path, const std::string& name,
                       const std::string& parent) {
    Object control = button(name);
    control.parent = parent;
    teams->put(path, control);
  };
  teams->put("/row", {.role = 32, .parent = "/list", .children = {"/muteRow"}});
  teams->put("/toolbar", {.role = 63, .parent = "/document", .children = {"/people", "/mic"}});
  put("/muteRow", "Mute", "/row");
  put("/people", "People", "/toolbar");
  put("/mic", label, "/toolbar");
  EXPECT_TRUE(readsLabel());
  EXPECT_THAT(reader_.controls(), ElementsAre(label, "People", "Mute"));
}

TEST_F(AtspiAccessibilityTreeTest, SlowProgramCostsTwoTimeoutsPerSnapshot) {
  constexpr std::chrono::milliseconds timeout{1000};
  // What a busy machine may add.
  constexpr std::chrono::milliseconds slack{800};
  const auto teams = meeting();
  teams->setReplyDelay(std::chrono::milliseconds{900});
  for (int i = 0; i < 4; ++i) {
    const auto began = std::chrono::steady_clock::now();
    reader_.read();
    EXPECT_LT(std::chrono::steady_clock::now() - began, 2 * timeout + slack) << i;
    // Late replies arrive.
    std::this_thread::sleep_for(timeout);
  }
}

TEST_F(AtspiAccessibilityTreeTest, ReadsControlsInBatches) {
  std::map<std::string, Object> objects;
  for (int i = 100; i < 300; ++i) objects["/b" + std::to_string(i)] = button("Reaction");
  objects["/c"] = button(label);
  const auto teams = browser(objects);
  // However slow the machine, nothing is read again because it has grown old.
  AtspiAccessibilityTree tree({}, {}, std::chrono::minutes{10});
  TeamsReader reader(tree, tree.workspace());
  ASSERT_EQ(reader.read(), label);
  EXPECT_EQ(reader.visits(), 203);
  // One question a control, beyond those that find them.
  EXPECT_LT(tree.callCount(), 201U + 20U);
}

TEST_F(AtspiAccessibilityTreeTest, IgnoresRepliesOfTheWrongType) {
  const auto hostile = browser({{"/b", button(label)}});
  const auto meeting = browser({{"/b", button(label)}});
  GVariant* (*const nonsense[])() = {
      [] { return g_variant_new("()"); },
      [] { return g_variant_new("(s)", "text"); },
      [] { return g_variant_new("(u)", 4'000'000'000U); },
      [] { return g_variant_new("(v)", g_variant_new_uint64(7)); },
      [] { return g_variant_new("(v)", g_variant_new_string(std::string(9000, 'x').c_str())); },
      [] { return g_variant_new("(as)", nullptr); },
      [] { return g_variant_new("(a(so))", nullptr); },
      [] { return g_variant_new("(a{sv})", nullptr); },
      [] { return g_variant_new("(a{ss})", nullptr); },
      [] { return g_variant_new("(ss)", "two", "texts"); },
      [] {
        GVariantBuilder builder;
        g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&builder, "{sv}", "Name", g_variant_new_int32(1));
        g_variant_builder_add(&builder, "{sv}", "Description", g_variant_new("(ii)", 1, 2));
        g_variant_builder_add(&builder, "{sv}", "Attributes", g_variant_new_string("none"));
        return g_variant_new("(a{sv})", &builder);
      },
  };
  for (const char* method : {"Get", "GetAll", "GetRole", "GetChildren", "GetMatches",
                             "GetAttributes", "GetName", "DoAction", "GetAccessibleAtPoint"}) {
    for (const auto make : nonsense) {
      hostile->answerWith([&](const std::string&, const std::string& asked) {
        return asked == method ? make() : nullptr;
      });
      AtspiAccessibilityTree tree;
      TeamsReader reader(tree, tree.workspace());
      EXPECT_TRUE(readsLabel(reader)) << method;
      // Nothing here changes its label, which a press would wait for.
      tree.setMessagingTimeout(reader.button(), 0.05F);
      reader.press();
    }
  }
}

TEST_F(AtspiAccessibilityTreeTest, ProgramKilledInTheMiddleOfASearchCostsNoTimeout) {
  std::string found;
  int answered = 0;
  for (; found != label && answered < 100; ++answered) {
    // Not a browser, which would be waited for until it presents documents.
    auto client = program("Microsoft Teams", "GTK");
    client->put("/b", button(label));
    client->put("/document",
                {.role = 95, .documentAttributes = {{"URI", teamsAddress}}, .children = {"/b"}});
    client->put(root, {.role = 75, .children = {"/document"}});
    client->freezeAfter(answered);
    std::atomic<bool> isOver = false;
    std::thread killer([&] {
      while (!client->keepsCallsWaiting() && !isOver)
        std::this_thread::sleep_for(std::chrono::milliseconds{1});
      client.reset();
    });
    TeamsReader reader(tree_, tree_.workspace());
    const auto began = std::chrono::steady_clock::now();
    found = reader.read();
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds{1}) << answered;
    isOver = true;
    killer.join();
  }
  // It was killed at each of its calls.
  EXPECT_EQ(found, label);
  EXPECT_GT(answered, 5);
  const auto teams = meeting();
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(AtspiAccessibilityTreeTest, LabelOfAMebibyteIsNoLabel) {
  const auto teams =
      browser({{"/a", button("Mute mic " + std::string(1 << 20, 'x'))}, {"/b", button(label)}});
  EXPECT_EQ(reader_.read(), label);
  EXPECT_THAT(reader_.controls(), ElementsAre("", label));
}

TEST_F(AtspiAccessibilityTreeTest, ReadsManyControlsInOneRoundTrip) {
  const auto one = meeting();
  ASSERT_TRUE(readsLabel());
  // The fewest of several searches: a program that replies late on a busy machine costs more.
  const auto roundTripsOfASearch = [] {
    std::vector<std::uint64_t> counts;
    for (int i = 0; i < 3; ++i) {
      AtspiAccessibilityTree tree;
      TeamsReader reader(tree, tree.workspace());
      EXPECT_TRUE(readsLabel(reader));
      counts.push_back(tree.roundTripCount());
    }
    return *std::min_element(counts.begin(), counts.end());
  };
  const auto expected = roundTripsOfASearch();
  for (const char* path : {"/1", "/2", "/3", "/4", "/5", "/6"}) one->put(path, button("Leave"));
  one->put("/document", {.role = 95,
                         .documentAttributes = {{"URI", teamsAddress}},
                         .children = {"/1", "/2", "/3", "/b", "/4", "/5", "/6"}});
  EXPECT_EQ(roundTripsOfASearch(), expected);
}

}  // namespace
}  // namespace hushbox
