#include "platform/simulated/SimulatedAccessibilityTree.h"

#include <gmock/gmock.h>

#include "tests/platform/simulated/CaughtViolations.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

class SimulatedAccessibilityTreeTest : public testing::Test {
 protected:
  static constexpr std::int32_t process = 501;

  AccessibilityError read(const AccessibilityElementRef& element, const char* attribute) {
    value = std::monostate{};
    return tree.copyAttributeValue(element, attribute, value);
  }

  /// How long a call takes.
  template <typename Call>
  Instant::duration timeOf(Call call) {
    const Instant before = loop.now();
    call();
    return loop.now() - before;
  }

  Journal journal;
  SimulatedMainLoop loop{journal};
  SimulatedAccessibilityTree tree{journal, loop};
  SimulatedElementRef root = tree.launch(process);
  AttributeValue value;
};

TEST_F(SimulatedAccessibilityTreeTest, AttributesReturnTheirValueTypeOrError) {
  const auto button = root->append("button", {{"AXRole", std::string("AXButton")},
                                              {"AXTitle", OtherAttributeValue{}},
                                              {"AXHelp", std::monostate{}},
                                              {"AXDescription", accessibility::noValue}});
  EXPECT_EQ(read(button, "AXRole"), 0);
  EXPECT_EQ(value, AttributeValue(std::string("AXButton")));
  EXPECT_EQ(read(button, "AXTitle"), 0);
  EXPECT_EQ(value, AttributeValue(OtherAttributeValue{}));
  EXPECT_EQ(read(button, "AXHelp"), 0);
  EXPECT_EQ(value, AttributeValue());
  EXPECT_EQ(read(button, "AXDescription"), accessibility::noValue);
  EXPECT_EQ(read(button, "AXDOMIdentifier"), accessibility::attributeUnsupported);
}

TEST_F(SimulatedAccessibilityTreeTest, ChildrenAreInOrderUnlessUnreadable) {
  const auto first = root->append("first");
  const auto second = root->append("second");
  const auto application = tree.createApplication(process);
  EXPECT_EQ(read(application, "AXChildren"), 0);
  EXPECT_EQ(value, AttributeValue(std::vector<AccessibilityElementRef>{first, second}));
  root->attributes["AXChildren"] = accessibility::failure;
  EXPECT_EQ(read(application, "AXChildren"), accessibility::failure);
  root->attributes["AXChildren"] = std::string("no list");
  EXPECT_EQ(read(application, "AXChildren"), 0);
  EXPECT_EQ(value, AttributeValue(std::string("no list")));
}

TEST_F(SimulatedAccessibilityTreeTest, JournalRecordsEveryCallWithItsResult) {
  const auto button = root->append("microphone", {{"AXRole", std::string("AXButton")}});
  const auto application = tree.createApplication(process);
  tree.isProcessTrusted();
  tree.setMessagingTimeout(application, 1.0F);
  tree.setAttributeValue(application, "AXManualAccessibility", true);
  read(button, "AXRole");
  read(button, "AXTitle");
  read(application, "AXChildren");
  tree.performAction(button, "AXPress");
  tree.setTrusted(false);
  tree.isProcessTrustedWithOptions(true);
  tree.isProcessTrustedWithOptions(false);
  EXPECT_EQ(journal.take("accessibility"),
            (Lines{"application 501", "trusted -> true", "timeout application 501: 1 s -> 0",
                   "set application 501 AXManualAccessibility: true -> 0",
                   "copy microphone AXRole: \"AXButton\" -> 0", "copy microphone AXTitle -> -25205",
                   "copy application 501 AXChildren: 1 elements -> 0",
                   "perform microphone AXPress -> -25206", "trusted, prompting -> false",
                   "trusted, not prompting -> false"}));
  EXPECT_EQ(tree.promptCount(), 1U);
}

TEST_F(SimulatedAccessibilityTreeTest, WithoutPermissionEveryCallIsRefused) {
  const auto button = root->append("button", {{"AXRole", std::string("AXButton")}});
  tree.setTrusted(false);
  EXPECT_EQ(read(button, "AXRole"), accessibility::apiDisabled);
  EXPECT_EQ(tree.setAttributeValue(root, "AXManualAccessibility", true),
            accessibility::apiDisabled);
  EXPECT_EQ(tree.performAction(button, "AXPress"), accessibility::apiDisabled);
}

TEST_F(SimulatedAccessibilityTreeTest, AttributesCanBeWrittenOnTheApplicationOnly) {
  const auto application = tree.createApplication(process);
  EXPECT_EQ(tree.setAttributeValue(application, "AXManualAccessibility", true), 0);
  EXPECT_EQ(tree.written(process, "AXManualAccessibility"), true);
  EXPECT_EQ(tree.written(process, "AXEnhancedUserInterface"), std::nullopt);
  EXPECT_EQ(tree.written(7, "AXManualAccessibility"), std::nullopt);
  EXPECT_EQ(tree.setAttributeValue(root->append("window"), "AXManualAccessibility", true),
            accessibility::attributeUnsupported);
  tree.setAttributeWriteStatus(accessibility::cannotComplete);
  EXPECT_EQ(tree.setAttributeValue(application, "AXEnhancedUserInterface", true),
            accessibility::cannotComplete);
  EXPECT_EQ(tree.written(process, "AXEnhancedUserInterface"), std::nullopt);
}

TEST_F(SimulatedAccessibilityTreeTest, EachCallToAFrozenApplicationTakesTheMessagingTimeout) {
  const auto button = root->append("button", {{"AXRole", std::string("AXButton")}});
  tree.setMessagingTimeout(tree.createApplication(process), 1.5F);
  tree.freeze(process);
  EXPECT_EQ(timeOf([&] { EXPECT_EQ(read(button, "AXRole"), accessibility::cannotComplete); }),
            1500ms);
  EXPECT_EQ(timeOf([&] {
              EXPECT_EQ(tree.performAction(button, "AXPress"), accessibility::cannotComplete);
            }),
            1500ms);
  tree.thaw(process);
  EXPECT_EQ(timeOf([&] { EXPECT_EQ(read(button, "AXRole"), 0); }), 0ms);
}

TEST_F(SimulatedAccessibilityTreeTest, SlowApplicationRepliesAfterItsResponseTimeOrTimesOut) {
  tree.setMessagingTimeout(root, 1.0F);
  tree.setResponseTime(process, 1s);
  EXPECT_EQ(timeOf([&] { EXPECT_EQ(read(root, "AXRole"), 0); }), 1s);
  tree.setResponseTime(process, 1.001s);
  EXPECT_EQ(timeOf([&] { EXPECT_EQ(read(root, "AXRole"), accessibility::cannotComplete); }), 1s);
}

TEST_F(SimulatedAccessibilityTreeTest, CallThatWouldHangIsAViolation) {
  const CaughtViolations caught;
  tree.freeze(process);
  EXPECT_EQ(read(root, "AXRole"), accessibility::cannotComplete);
  tree.setMessagingTimeout(root, 1.0F);
  read(root, "AXRole");
  EXPECT_EQ(caught.messages().size(), 1U);
  // Zero removes the timeout.
  tree.setMessagingTimeout(root, 0.0F);
  read(root, "AXRole");
  EXPECT_THAT(caught.messages(), ElementsAre(HasSubstr("hangs"), HasSubstr("hangs")));
}

TEST_F(SimulatedAccessibilityTreeTest, RemovedElementsAreInvalid) {
  const auto window = root->append("window", {{"AXRole", std::string("AXWindow")}});
  const auto button = window->append("button", {{"AXRole", std::string("AXButton")}});
  EXPECT_EQ(read(button, "AXRole"), 0);
  root->removeChild(window);
  EXPECT_EQ(read(window, "AXRole"), accessibility::invalidElement);
  EXPECT_EQ(read(button, "AXRole"), accessibility::invalidElement);
  const auto other = root->append("other", {{"AXRole", std::string("AXWindow")}});
  root->removeChildren();
  EXPECT_EQ(read(other, "AXRole"), accessibility::invalidElement);
  EXPECT_EQ(read(root, "AXRole"), 0);
}

TEST_F(SimulatedAccessibilityTreeTest, ElementsOfAnExitedApplicationStayInvalidAfterARestart) {
  const auto button = root->append("button", {{"AXRole", std::string("AXButton")}});
  const auto application = tree.createApplication(process);
  tree.quit(process);
  EXPECT_EQ(read(application, "AXRole"), accessibility::invalidElement);
  tree.launch(process);
  EXPECT_EQ(read(button, "AXRole"), accessibility::invalidElement);
  EXPECT_EQ(read(root, "AXRole"), accessibility::invalidElement);
  EXPECT_EQ(read(application, "AXRole"), 0);
}

TEST_F(SimulatedAccessibilityTreeTest, ElementOfAnotherTreeIsInvalid) {
  SimulatedAccessibilityTree other{journal, loop};
  const auto button =
      other.launch(process)->append("button", {{"AXRole", std::string("AXButton")}});
  EXPECT_EQ(read(button, "AXRole"), accessibility::invalidElement);
  EXPECT_EQ(read(other.createApplication(process), "AXRole"), accessibility::invalidElement);
  EXPECT_EQ(read(std::make_shared<AccessibilityElement>(), "AXRole"),
            accessibility::invalidElement);
}

TEST_F(SimulatedAccessibilityTreeTest, DeepTreesDoNotOverflowTheStack) {
  SimulatedElementRef last = root;
  for (int depth = 0; depth < 200'000; ++depth) last = last->append("element");
  last->attributes["AXRole"] = std::string("AXButton");
  EXPECT_EQ(read(last, "AXRole"), 0);
  tree.quit(process);
  EXPECT_EQ(read(last, "AXRole"), accessibility::invalidElement);
}

TEST_F(SimulatedAccessibilityTreeTest, PrebuiltSubtreeBelongsToTheTreeItIsAddedTo) {
  const auto window = std::make_shared<SimulatedElement>("window");
  const auto button = window->append("button", {{"AXRole", std::string("AXButton")}});
  EXPECT_EQ(read(button, "AXRole"), accessibility::invalidElement);
  root->append(window);
  EXPECT_EQ(read(button, "AXRole"), 0);
}

}  // namespace
}  // namespace hushbox
