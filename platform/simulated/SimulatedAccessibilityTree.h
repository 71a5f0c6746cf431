#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/AccessibilityTree.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedElement.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// The user interfaces of simulated applications.
///
/// Journal lines:
///   "trusted -> true"                          "trusted, prompting -> false"
///   "application 501"                          "timeout application 501: 1 s -> 0"
///   "set application 501 AXManualAccessibility: true -> 0"
///   "copy microphone AXRole: \"AXButton\" -> 0"
///   "copy window AXChildren: 3 elements -> 0"  "copy window AXTitle -> -25205"
///   "perform microphone AXPress -> 0"
class SimulatedAccessibilityTree final : public AccessibilityTree {
 public:
  SimulatedAccessibilityTree(Journal& journal, SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  /// Starts an application and returns its element, to add others to.
  SimulatedElementRef launch(std::int32_t processIdentifier);
  /// Ends the application; all its elements become invalid.
  void quit(std::int32_t processIdentifier);

  /// How long the application takes for each call; initially no time. If that exceeds the messaging
  /// timeout, the call returns `cannotComplete` when the timeout has passed.
  void setResponseTime(std::int32_t processIdentifier, TimeInterval time);
  /// The application stops replying. A call without a messaging timeout is then a violation.
  void freeze(std::int32_t processIdentifier);
  void thaw(std::int32_t processIdentifier) { setResponseTime(processIdentifier, {}); }

  /// Whether the user has granted permission; initially true. Without it every call is refused.
  void setTrusted(bool trusted) { trusted_ = trusted; }
  /// How often the system was asked to prompt the user.
  std::size_t promptCount() const { return prompts_; }

  /// Returns the application's messaging timeout; infinite while none is set.
  TimeInterval messagingTimeout(std::int32_t processIdentifier) const;

  /// What `setAttributeValue` returns for an application's element; initially success.
  void setAttributeWriteStatus(AccessibilityError status) { writeStatus_ = status; }
  /// What a read that fails leaves in its output; initially it leaves the output alone.
  void setOutputOfFailedReads(AttributeValue value) { outputOfFailedReads_ = std::move(value); }
  /// Returns what was last written to that attribute of the application.
  std::optional<bool> written(std::int32_t processIdentifier, const std::string& attribute) const;

  bool isProcessTrusted() override;
  bool isProcessTrustedWithOptions(bool prompt) override;
  AccessibilityElementRef createApplication(std::int32_t processIdentifier) override;
  AccessibilityError setMessagingTimeout(const AccessibilityElementRef& element,
                                         float seconds) override;
  AccessibilityError setAttributeValue(const AccessibilityElementRef& element,
                                       std::string_view attribute, bool value) override;
  AccessibilityError copyAttributeValue(const AccessibilityElementRef& element,
                                        std::string_view attribute, AttributeValue& value) override;
  AccessibilityError performAction(const AccessibilityElementRef& element,
                                   std::string_view action) override;

 private:
  struct Application {
    SimulatedElementRef root;
    TimeInterval responseTime{};
    std::optional<TimeInterval> timeout;
    std::map<std::string, bool> written;
  };
  struct ApplicationElement;
  /// What a reference refers to.
  struct Target {
    std::int32_t processIdentifier = 0;
    /// Null if the element has left the screen or belongs to another tree.
    const SimulatedElement* element = nullptr;
    std::string name;
    bool isApplication = false;
  };

  Application* find(std::int32_t processIdentifier);
  Target resolve(const AccessibilityElementRef& element);
  AccessibilityError reach(const Target& target);
  AccessibilityError read(const Target& target, std::string_view attribute, AttributeValue& value);

  Journal& journal_;
  SimulatedMainLoop& loop_;
  std::map<std::int32_t, Application> applications_;
  bool trusted_ = true;
  std::size_t prompts_ = 0;
  AccessibilityError writeStatus_ = accessibility::success;
  std::optional<AttributeValue> outputOfFailedReads_;
  /// Distinguishes this tree's elements from those of another.
  std::shared_ptr<const void> identity_ = std::make_shared<char>();
};

}  // namespace hushbox
