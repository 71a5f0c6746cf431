#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/AccessibilityTree.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedElement.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// The user interfaces of simulated applications.
///
/// Lines of the journal:
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

  /// An application's user interface appears; the returned element is the application's own.
  SimulatedElementRef launch(std::int32_t processIdentifier);
  /// The application ends, and all its elements with it.
  void quit(std::int32_t processIdentifier);

  /// How long the application takes over each call; at first no time. Where that is longer than
  /// the messaging time-out, the call ends with `cannotComplete` when the time-out has passed.
  void setResponseTime(std::int32_t processIdentifier, TimeInterval time);
  /// The application does not answer at all; a call without a time-out is then a violation.
  void freeze(std::int32_t processIdentifier);
  void thaw(std::int32_t processIdentifier) { setResponseTime(processIdentifier, {}); }

  /// Whether the user has given permission; at first so. Without, every call is refused.
  void setTrusted(bool trusted) { trusted_ = trusted; }
  /// How often the system has been let ask the user.
  std::size_t promptCount() const { return prompts_; }

  /// What `setAttributeValue` returns for an application's element; success at first.
  void setAttributeWriteStatus(AccessibilityError status) { writeStatus_ = status; }
  /// What was last written to that attribute of the application.
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
  /// Where a reference leads.
  struct Target {
    std::int32_t processIdentifier = 0;
    /// What is on the screen; null when it isn't, or isn't of this tree.
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
  /// Tells this tree's elements from another's.
  std::shared_ptr<const void> identity_ = std::make_shared<char>();
};

}  // namespace hushbox
