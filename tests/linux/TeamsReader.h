#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/AccessibilityTree.h"
#include "platform/Workspace.h"

namespace hushbox {

/// Reads and presses Teams in the order in which the program does: permission, running application,
/// its element and time-out, then the button found before, or else a walk breadth first.
class TeamsReader {
 public:
  static constexpr const char* notTrusted = "not trusted";
  static constexpr const char* notRunning = "not running";
  static constexpr const char* noMeeting = "no meeting";

  TeamsReader(AccessibilityTree& tree, Workspace& workspace) : tree_(tree), workspace_(workspace) {}

  /// One reading: the label of the microphone button, or one of the words above.
  std::string read() {
    visits_ = 0;
    if (!tree_.isProcessTrusted()) return notTrusted;
    const auto app = application();
    if (!app) return notRunning;
    if (button_) {
      if (const auto label = microphoneLabel(button_)) return *label;
      button_ = nullptr;
    }
    std::deque<AccessibilityElementRef> queue{app};
    for (; !queue.empty() && visits_ < 40000; queue.pop_front()) {
      ++visits_;
      if (const auto label = microphoneLabel(queue.front())) {
        button_ = queue.front();
        return *label;
      }
      for (const auto& child : children(queue.front())) queue.push_back(child);
    }
    return noMeeting;
  }

  /// Presses the button of the last reading.
  AccessibilityError press() { return tree_.performAction(button_, "AXPress"); }

  AccessibilityElementRef application() {
    for (const RunningApplication& running : workspace_.runningApplications()) {
      if (running.bundleIdentifier != "com.microsoft.teams2") continue;
      processIdentifier_ = running.processIdentifier;
      auto app = tree_.createApplication(running.processIdentifier);
      tree_.setMessagingTimeout(app, 1.0F);
      tree_.setAttributeValue(app, "AXManualAccessibility", true);
      tree_.setAttributeValue(app, "AXEnhancedUserInterface", true);
      return app;
    }
    return nullptr;
  }

  std::optional<std::string> text(const AccessibilityElementRef& element,
                                  std::string_view attribute) {
    AttributeValue value;
    if (tree_.copyAttributeValue(element, attribute, value) != 0) return std::nullopt;
    const auto* found = std::get_if<std::string>(&value);
    return found ? std::optional(*found) : std::nullopt;
  }

  std::vector<AccessibilityElementRef> children(const AccessibilityElementRef& element) {
    AttributeValue value;
    if (tree_.copyAttributeValue(element, "AXChildren", value) != 0) return {};
    const auto* found = std::get_if<std::vector<AccessibilityElementRef>>(&value);
    return found ? *found : std::vector<AccessibilityElementRef>();
  }

  /// The names of all buttons and check boxes that the walk would come to.
  std::vector<std::string> controls() {
    std::vector<std::string> names;
    for (const auto& surface : children(application()))
      for (const auto& control : children(surface))
        names.push_back(text(control, "AXDescription").value_or(""));
    return names;
  }

  const AccessibilityElementRef& button() const { return button_; }
  std::int32_t processIdentifier() const { return processIdentifier_; }
  int visits() const { return visits_; }

 private:
  std::optional<std::string> microphoneLabel(const AccessibilityElementRef& element) {
    const auto role = text(element, "AXRole");
    if (role != "AXButton" && role != "AXCheckBox") return std::nullopt;
    const bool identified = text(element, "AXDOMIdentifier") == "microphone-button";
    for (const char* attribute : {"AXDescription", "AXTitle", "AXHelp", "AXDOMIdentifier"}) {
      const std::string label = text(element, attribute).value_or("");
      if (!label.starts_with("Mute") && !label.starts_with("Unmute")) continue;
      const bool named = label.find("mic") != label.npos || label.find("Shift") != label.npos;
      if (identified || named || label == "Mute" || label == "Unmute") return label;
    }
    return std::nullopt;
  }

  AccessibilityTree& tree_;
  Workspace& workspace_;
  AccessibilityElementRef button_;
  std::int32_t processIdentifier_ = 0;
  int visits_ = 0;
};

}  // namespace hushbox
