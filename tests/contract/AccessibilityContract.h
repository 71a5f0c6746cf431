#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "tests/contract/AccessibilityDriver.h"
#include "tests/contract/Contract.h"

namespace hushbox {

/// What every AccessibilityTree and Workspace does.
class AccessibilityContract : public Contract<AccessibilityDriver> {
 protected:
  static constexpr float timeoutSeconds = 1.0F;

  AccessibilityTree& tree() { return driver().tree(); }

  std::optional<std::int32_t> process() {
    for (const RunningApplication& running : driver().workspace().runningApplications()) {
      if (running.bundleIdentifier == "com.microsoft.teams2") return running.processIdentifier;
    }
    return std::nullopt;
  }

  /// Returns the application's element, set up as the program does it, or null.
  AccessibilityElementRef application() {
    const auto found = process();
    if (!found) return nullptr;
    auto element = tree().createApplication(*found);
    tree().setMessagingTimeout(element, timeoutSeconds);
    tree().setAttributeValue(element, "AXManualAccessibility", true);
    return element;
  }

  std::optional<std::string> text(const AccessibilityElementRef& element,
                                  std::string_view attribute) {
    AttributeValue value;
    if (tree().copyAttributeValue(element, attribute, value) != 0) return std::nullopt;
    const auto* found = std::get_if<std::string>(&value);
    return found ? std::optional(*found) : std::nullopt;
  }

  std::vector<AccessibilityElementRef> children(const AccessibilityElementRef& element) {
    AttributeValue value;
    if (tree().copyAttributeValue(element, "AXChildren", value) != 0) return {};
    const auto* found = std::get_if<std::vector<AccessibilityElementRef>>(&value);
    return found ? *found : std::vector<AccessibilityElementRef>();
  }

  std::string label(const AccessibilityElementRef& element) {
    for (const char* attribute : {"AXDescription", "AXTitle", "AXHelp"}) {
      const auto found = text(element, attribute);
      if (found && found->find("ute mic") != std::string::npos) return *found;
    }
    return "";
  }

  /// Whether the button's label is that of a meeting in this state.
  bool says(const AccessibilityElementRef& button, bool muted) {
    return label(button).starts_with(muted ? "Unmute mic" : "Mute mic");
  }

  /// Returns the microphone button, found as the program finds it: breadth-first, by role and
  /// label.
  AccessibilityElementRef find() {
    const auto root = application();
    if (!root) return nullptr;
    std::deque<AccessibilityElementRef> queue{root};
    for (int visits = 0; !queue.empty() && visits < 40000; ++visits) {
      const auto element = queue.front();
      queue.pop_front();
      const auto role = text(element, "AXRole");
      if ((role == "AXButton" || role == "AXCheckBox") && !label(element).empty()) return element;
      for (const auto& child : children(element)) queue.push_back(child);
    }
    return nullptr;
  }

  /// Opens a meeting and returns its microphone button.
  AccessibilityElementRef openMeeting(bool muted = false) {
    driver().openMeeting(muted);
    AccessibilityElementRef button;
    EXPECT_TRUE(driver().waitFor([&] { return (button = find()) != nullptr; }));
    return button;
  }
};

TEST_P(AccessibilityContract, ProcessIsTrusted) {
  EXPECT_TRUE(tree().isProcessTrusted());
  EXPECT_TRUE(tree().isProcessTrustedWithOptions(false));
}

TEST_P(AccessibilityContract, ApplicationIsListedWhileItRuns) {
  EXPECT_EQ(process(), std::nullopt);
  openMeeting();
  ASSERT_NE(process(), std::nullopt);
  EXPECT_GT(*process(), 0);
  driver().quit();
  EXPECT_TRUE(driver().waitFor([&] { return !process(); }));
}

TEST_P(AccessibilityContract, CallsOnTheElementOfAMissingProcessFail) {
  const auto missing = tree().createApplication(0x7FFFFFF0);
  ASSERT_TRUE(missing);
  tree().setMessagingTimeout(missing, timeoutSeconds);
  EXPECT_EQ(text(missing, "AXRole"), std::nullopt);
  EXPECT_TRUE(children(missing).empty());
  EXPECT_NE(tree().performAction(missing, "AXPress"), 0);
}

TEST_P(AccessibilityContract, MicrophoneButtonSaysWhatAPressWouldDo) {
  const auto button = openMeeting(false);
  ASSERT_TRUE(button);
  EXPECT_TRUE(says(button, false)) << label(button);
  EXPECT_EQ(text(button, "AXDOMIdentifier"), "microphone-button");
}

TEST_P(AccessibilityContract, MicrophoneButtonOfAMutedMeetingOffersToUnmute) {
  const auto button = openMeeting(true);
  ASSERT_TRUE(button);
  EXPECT_TRUE(says(button, true)) << label(button);
}

TEST_P(AccessibilityContract, PressArrivesOnceAndChangesTheLabelOfTheSameElement) {
  const auto button = openMeeting();
  ASSERT_TRUE(button);
  EXPECT_EQ(tree().performAction(button, "AXPress"), 0);
  EXPECT_TRUE(driver().waitFor([&] { return driver().isMuted() && says(button, true); }));
  EXPECT_EQ(driver().pressCount(), 1U);
}

TEST_P(AccessibilityContract, PressLastsUntilTheLabelShowsIt) {
  const TimeInterval delay = 0.7 * driver().maxPressWait();
  if (!driver().delayLabel(delay)) GTEST_SKIP() << "cannot delay a label";
  const auto button = openMeeting();
  ASSERT_TRUE(button);
  const Instant before = driver().now();
  EXPECT_EQ(tree().performAction(button, "AXPress"), 0);
  EXPECT_GE(driver().now() - before, delay - TimeInterval(0.01));
  // A read right after it must not show the state before it.
  ASSERT_TRUE(application());
  EXPECT_TRUE(says(button, true)) << label(button);
  EXPECT_EQ(driver().pressCount(), 1U);
}

TEST_P(AccessibilityContract, PressThatTheLabelNeverShowsLastsTheWaitAndIsThenBelieved) {
  if (!driver().delayLabel(TimeInterval(3600))) GTEST_SKIP() << "cannot delay a label";
  const auto button = openMeeting();
  ASSERT_TRUE(button);
  const Instant before = driver().now();
  EXPECT_EQ(tree().performAction(button, "AXPress"), 0);
  EXPECT_GE(driver().now() - before, driver().maxPressWait() - TimeInterval(0.01));
  // Some slack for a busy machine.
  EXPECT_LT(driver().now() - before, driver().maxPressWait() + TimeInterval(1.5));
  ASSERT_TRUE(application());
  EXPECT_TRUE(says(button, false)) << label(button);
}

TEST_P(AccessibilityContract, ChangeInTheApplicationShowsInTheTree) {
  const auto button = openMeeting();
  ASSERT_TRUE(button);
  driver().setMuted(true);
  EXPECT_TRUE(driver().waitFor([&] { return says(button, true); }));
  driver().setMuted(false);
  EXPECT_TRUE(driver().waitFor([&] { return says(button, false); }));
}

TEST_P(AccessibilityContract, UnknownAttributeHasNoValue) {
  const auto button = openMeeting();
  ASSERT_TRUE(button);
  EXPECT_EQ(text(button, "AXNoSuchAttribute"), std::nullopt);
}

TEST_P(AccessibilityContract, UnknownActionFailsAndPressesNothing) {
  const auto button = openMeeting();
  ASSERT_TRUE(button);
  EXPECT_NE(tree().performAction(button, "AXNoSuchAction"), 0);
  driver().letPass(TimeInterval(0.2));
  EXPECT_EQ(driver().pressCount(), 0U);
}

TEST_P(AccessibilityContract, ButtonOfAnEndedMeetingIsInvalid) {
  const auto button = openMeeting();
  ASSERT_TRUE(button);
  driver().leaveMeeting();
  EXPECT_TRUE(driver().waitFor([&] { return label(button).empty(); }));
  EXPECT_NE(tree().performAction(button, "AXPress"), 0);
  EXPECT_TRUE(driver().waitFor([&] { return find() == nullptr; }));
}

TEST_P(AccessibilityContract, CallsOnElementsOfAnExitedApplicationFail) {
  const auto button = openMeeting();
  ASSERT_TRUE(button);
  driver().quit();
  EXPECT_TRUE(driver().waitFor([&] { return !text(button, "AXRole"); }));
  EXPECT_NE(tree().performAction(button, "AXPress"), 0);
}

TEST_P(AccessibilityContract, CallsToAFrozenApplicationTimeOutAndSucceedAfterItThaws) {
  const auto button = openMeeting();
  ASSERT_TRUE(button);
  const auto root = application();
  driver().freeze();
  const Instant before = driver().now();
  AttributeValue value;
  EXPECT_NE(tree().copyAttributeValue(button, "AXRole", value), 0);
  // Leaves slack for a loaded machine, but a call without a timeout would take minutes.
  EXPECT_LT(driver().now() - before, std::chrono::seconds(5));
  driver().thaw();
  EXPECT_TRUE(driver().waitFor([&] { return says(button, false); }));
}

TEST_P(AccessibilityContract, CallsOnANullElementFail) {
  AttributeValue value;
  EXPECT_NE(tree().copyAttributeValue(nullptr, "AXRole", value), 0);
  EXPECT_NE(tree().setAttributeValue(nullptr, "AXManualAccessibility", true), 0);
  EXPECT_NE(tree().setMessagingTimeout(nullptr, timeoutSeconds), 0);
  EXPECT_NE(tree().performAction(nullptr, "AXPress"), 0);
}

}  // namespace hushbox
