#include <gmock/gmock.h>

#include <map>
#include <memory>

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
  ASSERT_EQ(reader_.read(), label);
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
  ASSERT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.text(reader_.button(), "AXRole"), "AXCheckBox");
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(teams->performed(), ElementsAre("/b 1"));
}

TEST_F(AtspiAccessibilityTreeTest, ReturnsActionUnsupportedForAButtonWithoutAPress) {
  Object menu = button(label);
  menu.actions = {"showContextMenu"};
  const auto teams = browser({{"/b", menu}});
  ASSERT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::actionUnsupported);
  EXPECT_EQ(tree_.performAction(reader_.button(), "AXShowMenu"), accessibility::actionUnsupported);
  EXPECT_THAT(teams->performed(), IsEmpty());
}

TEST_F(AtspiAccessibilityTreeTest, ReturnsFailureForARefusedPress) {
  Object refusing = button(label);
  refusing.takesActions = false;
  const auto teams = browser({{"/b", refusing}});
  ASSERT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.press(), accessibility::failure);
}

TEST_F(AtspiAccessibilityTreeTest, DestroyedObjectIsInvalidAndIsNotPressed) {
  const auto teams = browser({{"/b", button(label)}});
  ASSERT_EQ(reader_.read(), label);
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

TEST_F(AtspiAccessibilityTreeTest, ReadsControlsInBatches) {
  std::map<std::string, Object> objects;
  for (int i = 100; i < 300; ++i) objects["/b" + std::to_string(i)] = button("Reaction");
  objects["/c"] = button(label);
  const auto teams = browser(objects);
  ASSERT_EQ(reader_.read(), label);
  EXPECT_EQ(reader_.visits(), 203);
  // One question a control, beyond those that find them.
  EXPECT_LT(tree_.callCount(), 201U + 20U);
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
      EXPECT_EQ(reader.read(), label) << method;
      reader.press();
    }
  }
}

}  // namespace
}  // namespace hushbox
