#include "platform/macos/AXAccessibilityTree.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using doubles::AXStrange;
using testing::ElementsAre;

constexpr std::int32_t process = 501;

class AXAccessibilityTreeTest : public MacFixture {
 protected:
  AccessibilityElementRef application(float timeout = 1.0F) {
    const auto element = tree.createApplication(process);
    EXPECT_EQ(tree.setMessagingTimeout(element, timeout), accessibility::success);
    return element;
  }

  AttributeValue read(const AccessibilityElementRef& element, std::string_view attribute) {
    AttributeValue value;
    EXPECT_EQ(tree.copyAttributeValue(element, attribute, value), accessibility::success);
    return value;
  }

  std::vector<AccessibilityElementRef> children(const AccessibilityElementRef& element) {
    auto value = read(element, "AXChildren");
    const auto* found = std::get_if<std::vector<AccessibilityElementRef>>(&value);
    return found ? *found : std::vector<AccessibilityElementRef>();
  }

  doubles::AXNodeRef root = doubles::axApplication(process);
  AXAccessibilityTree tree;
};

using AXAccessibilityTreeDeathTest = AXAccessibilityTreeTest;

doubles::AXNodeRef node(std::map<std::string, doubles::AXValue> attributes) {
  auto made = std::make_shared<doubles::AXNode>();
  made->attributes = std::move(attributes);
  return made;
}

TEST_F(AXAccessibilityTreeTest, RequestsTrustWithAPromptOnlyWhenAsked) {
  EXPECT_TRUE(tree.isProcessTrusted());
  EXPECT_TRUE(doubles::prompts.empty());
  for (const bool trusted : {true, false}) {
    doubles::trusted = trusted;
    EXPECT_EQ(tree.isProcessTrusted(), trusted);
    EXPECT_EQ(tree.isProcessTrustedWithOptions(false), trusted);
    EXPECT_EQ(tree.isProcessTrustedWithOptions(true), trusted);
  }
  EXPECT_THAT(doubles::prompts, ElementsAre(false, true, false, true));
}

TEST_F(AXAccessibilityTreeTest, TextIsReadAsUtf8) {
  root->attributes["AXTitle"] = std::string("Mute mic (⌘+Shift+M)");
  EXPECT_EQ(read(application(), "AXTitle"), AttributeValue("Mute mic (⌘+Shift+M)"));
}

TEST_F(AXAccessibilityTreeTest, ReplacesWhatHasNoUtf8) {
  root->attributes["AXTitle"] = AXStrange::loneSurrogate;
  EXPECT_EQ(read(application(), "AXTitle"), AttributeValue("Mute?"));
}

TEST_F(AXAccessibilityTreeTest, ValuesOfOtherTypesReadAsOther) {
  for (const AXStrange strange : {AXStrange::number, AXStrange::boolean, AXStrange::null,
                                  AXStrange::nestedList, AXStrange::stringList}) {
    root->attributes["AXValue"] = strange;
    EXPECT_EQ(read(application(), "AXValue"), AttributeValue(OtherAttributeValue{}));
  }
}

TEST_F(AXAccessibilityTreeTest, SuccessWithoutAValueReadsAsNoValue) {
  root->attributes["AXValue"] = AXStrange::nothing;
  AttributeValue value = "before";
  EXPECT_EQ(tree.copyAttributeValue(application(), "AXValue", value), accessibility::success);
  EXPECT_EQ(value, AttributeValue());
}

TEST_F(AXAccessibilityTreeTest, EmptyListReadsAsAListOfElements) {
  root->attributes["AXWindows"] = AXStrange::emptyList;
  const auto value = read(application(), "AXWindows");
  EXPECT_TRUE(std::holds_alternative<std::vector<AccessibilityElementRef>>(value));
}

TEST_F(AXAccessibilityTreeTest, SkipsListMembersThatAreNotElements) {
  root->children = {node({{"AXTitle", "a"}}), node({{"AXTitle", "b"}})};
  root->strangeChildren = true;
  const auto found = children(application());
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(read(found[0], "AXTitle"), AttributeValue("a"));
  EXPECT_EQ(read(found[1], "AXTitle"), AttributeValue("b"));
}

TEST_F(AXAccessibilityTreeTest, SetsAttributesToBooleans) {
  const auto element = application();
  EXPECT_EQ(tree.setAttributeValue(element, "AXManualAccessibility", true),
            accessibility::attributeUnsupported);
  tree.setAttributeValue(element, "AXEnhancedUserInterface", false);
  EXPECT_THAT(root->written, ElementsAre(std::pair("AXEnhancedUserInterface", false),
                                         std::pair("AXManualAccessibility", true)));
}

TEST_F(AXAccessibilityTreeTest, PassesOnTheActionAndItsStatus) {
  std::vector<std::string> actions;
  root->perform = [&](const std::string& action) {
    actions.push_back(action);
    return accessibility::cannotComplete;
  };
  EXPECT_EQ(tree.performAction(application(), "AXPress"), accessibility::cannotComplete);
  EXPECT_THAT(actions, ElementsAre("AXPress"));
}

TEST_F(AXAccessibilityTreeTest, FailedReadReturnsItsStatusAndKeepsTheValue) {
  AttributeValue value = "before";
  EXPECT_EQ(tree.copyAttributeValue(application(), "AXNothing", value),
            accessibility::attributeUnsupported);
  EXPECT_EQ(tree.copyAttributeValue(application(), "AXHelp", value), accessibility::noValue);
  EXPECT_EQ(value, AttributeValue("before"));
}

TEST_F(AXAccessibilityTreeTest, TimeoutAppliesToTheWholeTreeBelowTheApplication) {
  root->children = {node({})};
  root->children[0]->children = {node({})};
  const auto button = children(children(application(1.5F))[0])[0];
  doubles::axFrozen = true;
  AttributeValue value;
  EXPECT_EQ(tree.copyAttributeValue(button, "AXRole", value), accessibility::cannotComplete);
  EXPECT_EQ(tree.performAction(button, "AXPress"), accessibility::cannotComplete);
  EXPECT_EQ(tree.setAttributeValue(button, "AXFocused", true), accessibility::cannotComplete);
  // The action reads what the element shows first.
  EXPECT_THAT(doubles::axWaits, ElementsAre(1.5F, 1.5F, 1.5F, 1.5F));
}

TEST_F(AXAccessibilityTreeTest, ActionReturnsOnceTheElementShowsItsEffect) {
  for (const char* attribute : {"AXDescription", "AXTitle", "AXHelp", "AXValue"}) {
    root->attributes = {{attribute, "Mute"}};
    Instant due;
    root->perform = [&](const std::string&) {
      due = doubles::now() + std::chrono::milliseconds(100);
      return accessibility::success;
    };
    root->beforeRead = [&] {
      if (due != Instant() && doubles::now() >= due) root->attributes[attribute] = "Unmute";
    };
    const Instant before = doubles::now();
    EXPECT_EQ(tree.performAction(application(), "AXPress"), accessibility::success);
    EXPECT_EQ(read(application(), attribute), AttributeValue("Unmute"));
    EXPECT_GE(doubles::now() - before, std::chrono::milliseconds(100));
    EXPECT_LE(doubles::now() - before, std::chrono::milliseconds(200));
  }
}

TEST_F(AXAccessibilityTreeTest, WaitsAtMostAsLongAgainAsTheElementTakes) {
  for (const auto delay : {0ms, 5ms, 45ms, 100ms, 300ms}) {
    root->attributes = {{"AXTitle", "Mute"}};
    Instant due;
    root->perform = [&](const std::string&) {
      due = doubles::now() + delay;
      return accessibility::success;
    };
    root->beforeRead = [&] {
      if (due != Instant() && doubles::now() >= due) root->attributes["AXTitle"] = "Unmute";
    };
    const Instant before = doubles::now();
    EXPECT_EQ(tree.performAction(application(), "AXPress"), accessibility::success);
    EXPECT_GE(doubles::now() - before, delay);
    EXPECT_LE(doubles::now() - before, delay == 0ms ? 0ms : 2 * delay + 10ms);
  }
}

TEST_F(AXAccessibilityTreeTest, ActionWithoutAVisibleEffectSucceedsAfterHalfASecondAndFewReads) {
  root->perform = [](const std::string&) { return accessibility::success; };
  const auto app = application();
  const Instant before = doubles::now();
  doubles::resetCalls();
  EXPECT_EQ(tree.performAction(app, "AXPress"), accessibility::success);
  EXPECT_EQ(doubles::now() - before, std::chrono::milliseconds(500));
  EXPECT_EQ(doubles::calls()["AXUIElementPerformAction"], 1);
  EXPECT_LE(doubles::calls()["AXUIElementCopyAttributeValue"], 8 * 4);
}

TEST_F(AXAccessibilityTreeTest, ActionThatFailsIsNotWaitedFor) {
  root->perform = [](const std::string&) { return accessibility::cannotComplete; };
  const Instant before = doubles::now();
  EXPECT_EQ(tree.performAction(application(), "AXPress"), accessibility::cannotComplete);
  EXPECT_EQ(doubles::now(), before);
}

TEST_F(AXAccessibilityTreeTest, ElementThatVanishesAfterAnActionIsNotWaitedFor) {
  root->attributes = {{"AXDescription", "Leave"}};
  root->perform = [&](const std::string&) {
    root->gone = true;
    return accessibility::success;
  };
  const Instant before = doubles::now();
  EXPECT_EQ(tree.performAction(application(), "AXPress"), accessibility::success);
  EXPECT_EQ(doubles::now(), before);
}

TEST_F(AXAccessibilityTreeTest, ApplicationThatFreezesInAnActionCostsOneTimeout) {
  root->perform = [](const std::string&) {
    doubles::axFrozen = true;
    return accessibility::success;
  };
  EXPECT_EQ(tree.performAction(application(), "AXPress"), accessibility::success);
  EXPECT_THAT(doubles::axWaits, ElementsAre(1.0F));
}

TEST_F(AXAccessibilityTreeTest, LaterTimeoutAppliesToExistingElements) {
  root->children = {node({})};
  const auto app = application(1.0F);
  const auto child = children(app)[0];
  AttributeValue value;
  tree.copyAttributeValue(child, "AXRole", value);
  for (const float timeout : {0.25F, 2.0F}) {
    EXPECT_EQ(tree.setMessagingTimeout(app, timeout), accessibility::success);
    doubles::axFrozen = true;
    tree.copyAttributeValue(child, "AXRole", value);
    doubles::axFrozen = false;
  }
  EXPECT_THAT(doubles::axWaits, ElementsAre(0.25F, 2.0F));
}

TEST_F(AXAccessibilityTreeTest, ApplicationWhoseTimeoutCannotBeSetIsNotCalled) {
  root->attributes["AXRole"] = "AXApplication";
  doubles::axTimeoutStatus = accessibility::failure;
  const auto app = tree.createApplication(process);
  EXPECT_EQ(tree.setMessagingTimeout(app, 1), accessibility::failure);
  AttributeValue value;
  EXPECT_EQ(tree.copyAttributeValue(app, "AXRole", value), accessibility::failure);
  EXPECT_EQ(doubles::calls()["AXUIElementCopyAttributeValue"], 0);
  doubles::axTimeoutStatus = 0;
  EXPECT_EQ(read(app, "AXRole"), AttributeValue("AXApplication"));
}

TEST_F(AXAccessibilityTreeTest, FindsApplicationsByTheirWholeProcessIdentifier) {
  for (const std::int32_t each : {70'000, 2'000'000'001}) {
    doubles::axApplication(each)->attributes["AXTitle"] = std::to_string(each);
    const auto element = tree.createApplication(each);
    tree.setMessagingTimeout(element, 1);
    EXPECT_EQ(read(element, "AXTitle"), AttributeValue(std::to_string(each)));
  }
}

TEST_F(AXAccessibilityTreeTest, ApplicationWithoutAProcessIsInvalid) {
  const auto element = tree.createApplication(-1);
  AttributeValue value;
  EXPECT_EQ(tree.setMessagingTimeout(element, 1), accessibility::invalidElement);
  EXPECT_EQ(tree.copyAttributeValue(element, "AXRole", value), accessibility::invalidElement);
  EXPECT_EQ(tree.performAction(element, "AXPress"), accessibility::invalidElement);
}

TEST_F(AXAccessibilityTreeDeathTest, SetsNoTimeoutOfItsOwn) {
  const auto app = tree.createApplication(process);
  AttributeValue value;
  EXPECT_DEATH(tree.copyAttributeValue(app, "AXRole", value), "without a messaging timeout");
}

TEST_F(AXAccessibilityTreeTest, TimeoutIsSetOncePerElement) {
  root->children = {node({{"AXRole", "AXButton"}})};
  const auto child = children(application())[0];
  doubles::resetCalls();
  for (int i = 0; i < 3; ++i) read(child, "AXRole");
  EXPECT_EQ(doubles::calls()["AXUIElementSetMessagingTimeout"], 1);
}

TEST_F(AXAccessibilityTreeTest, ElementWhoseTimeoutCannotBeSetIsNotCalled) {
  root->children = {node({{"AXRole", "AXButton"}})};
  const auto child = children(application())[0];
  doubles::axTimeoutStatus = accessibility::invalidElement;
  doubles::resetCalls();
  AttributeValue value;
  EXPECT_EQ(tree.copyAttributeValue(child, "AXRole", value), accessibility::invalidElement);
  EXPECT_EQ(doubles::calls()["AXUIElementCopyAttributeValue"], 0);
  doubles::axTimeoutStatus = 0;
  EXPECT_EQ(read(child, "AXRole"), AttributeValue("AXButton"));
}

TEST_F(AXAccessibilityTreeTest, ElementsLiveExactlyAsLongAsTheyAreHeld) {
  root->children = {node({{"AXTitle", "kept"}}), node({})};
  const long before = doubles::axElements();
  {
    const doubles::AutoreleasePool outer;
    AccessibilityElementRef kept;
    {
      const doubles::AutoreleasePool pool;
      kept = children(application())[0];
    }
    EXPECT_EQ(doubles::axElements(), before + 1);
    EXPECT_EQ(read(kept, "AXTitle"), AttributeValue("kept"));
  }
  EXPECT_EQ(doubles::axElements(), before);
}

TEST_F(AXAccessibilityTreeTest, ReleasesTheValuesThatItReads) {
  root->attributes = {{"AXTitle", "A title too long to be kept in a pointer"},
                      {"AXValue", AXStrange::number},
                      {"AXOther", AXStrange::nestedList}};
  root->children = {node({}), node({})};
  root->strangeChildren = true;
  const auto app = application();
  const auto round = [&] {
    const doubles::AutoreleasePool pool;
    for (const char* attribute : {"AXTitle", "AXValue", "AXOther", "AXChildren"}) {
      read(app, attribute);
    }
    AttributeValue value;
    tree.copyAttributeValue(app, "AXNothing", value);
    tree.setAttributeValue(app, "AXManualAccessibility", true);
    tree.performAction(app, "AXPress");
    tree.isProcessTrustedWithOptions(true);
    tree.createApplication(process);
  };
  round();
  const long before = doubles::liveObjects();
  for (int i = 0; i < 5; ++i) round();
  EXPECT_EQ(doubles::liveObjects(), before);
}

TEST_F(AXAccessibilityTreeTest, ElementOfAnotherTreeIsInvalid) {
  auto other = std::make_unique<AXAccessibilityTree>();
  const auto foreign = other->createApplication(process);
  const auto check = [&](const AccessibilityElementRef& element) {
    AttributeValue value;
    EXPECT_EQ(tree.setMessagingTimeout(element, 1), accessibility::invalidElement);
    EXPECT_EQ(tree.copyAttributeValue(element, "AXRole", value), accessibility::invalidElement);
    EXPECT_EQ(tree.setAttributeValue(element, "AXFocused", true), accessibility::invalidElement);
    EXPECT_EQ(tree.performAction(element, "AXPress"), accessibility::invalidElement);
  };
  check(foreign);
  other.reset();
  check(foreign);
  check(nullptr);
  check(std::make_shared<AccessibilityElement>());
}

}  // namespace
}  // namespace hushbox
