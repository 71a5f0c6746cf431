#include "teams/TeamsUI.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/Platform.h"
#include "platform/Workspace.h"
#include "support/Log.h"
#include "support/Text.h"

namespace hushbox {
namespace {

constexpr std::array<std::string_view, 2> bundleIDs = {"com.microsoft.teams2",
                                                       "com.microsoft.teams"};
constexpr std::array<std::string_view, 4> labelAttributes = {"AXDescription", "AXTitle", "AXHelp",
                                                             "AXDOMIdentifier"};

constexpr Log log{"teams-ui"};

/// For how long one call to Teams may block the main thread.
constexpr float messagingTimeoutSeconds = 1.0F;

/// A meeting window has a few thousand elements. The bound also ends the walk of a tree that
/// contains itself.
constexpr std::size_t maxVisits = 40000;

/// The microphone button found last, which saves the walk while the same meeting window is open.
AccessibilityElementRef cached;

void cache(AccessibilityElementRef element) {
  static bool droppedAtClose = false;
  cached = std::move(element);
  if (droppedAtClose) return;
  droppedAtClose = true;
  PlatformScope::atClose([] {
    cached = nullptr;
    droppedAtClose = false;
  });
}

bool saysMuteOrUnmute(std::string_view low) {
  return text::hasPrefix(low, "mute") || text::hasPrefix(low, "unmute");
}

/// Whether the label mentions the microphone or the keyboard shortcut, or is the bare word.
bool namesTheMicrophone(std::string_view low) {
  return text::contains(low, "mic") || text::contains(low, "⌘") || text::contains(low, "shift") ||
         text::equal(low, "mute") || text::equal(low, "unmute");
}

}  // namespace

TeamsUI::Result TeamsUI::setMuted(std::optional<bool> wanted) {
  if (!platform().accessibility.isProcessTrusted()) return Result::notTrusted;
  const auto app = teamsApp();
  if (!app) return Result::teamsNotRunning;
  const auto button = micButton(app);
  if (!button) return Result::noMeeting;
  if (wanted && offersToUnmute(*button) == *wanted) return Result::alreadySynced;
  const AccessibilityError status =
      platform().accessibility.performAction(button->element, "AXPress");
  log.info("Pressed Teams mic button '%{public}s' -> %d", button->label, status);
  return status == accessibility::success ? Result::pressed : Result::noMeeting;
}

std::optional<bool> TeamsUI::currentMuteState() {
  if (!platform().accessibility.isProcessTrusted()) return std::nullopt;
  const auto app = teamsApp();
  if (!app) return std::nullopt;
  const auto button = micButton(app);
  if (!button) return std::nullopt;
  return offersToUnmute(*button);
}

AccessibilityElementRef TeamsUI::teamsApp() {
  for (const RunningApplication& running : platform().workspace.runningApplications()) {
    const std::string identifier = running.bundleIdentifier.value_or("");
    const auto isTeams = [&](std::string_view one) { return text::equal(identifier, one); };
    if (std::none_of(bundleIDs.begin(), bundleIDs.end(), isTeams)) continue;
    AccessibilityTree& tree = platform().accessibility;
    auto app = tree.createApplication(running.processIdentifier);
    tree.setMessagingTimeout(app, messagingTimeoutSeconds);
    // Teams hides its web content until one of these is set. The statuses say nothing useful.
    tree.setAttributeValue(app, "AXManualAccessibility", true);
    tree.setAttributeValue(app, "AXEnhancedUserInterface", true);
    return app;
  }
  return nullptr;
}

std::optional<std::string> TeamsUI::string(const AccessibilityElementRef& element,
                                           std::string_view attribute) {
  AttributeValue value;
  const auto status = platform().accessibility.copyAttributeValue(element, attribute, value);
  if (status != accessibility::success) return std::nullopt;
  if (auto* text = std::get_if<std::string>(&value)) return std::move(*text);
  return std::nullopt;
}

std::vector<std::string> TeamsUI::labels(const AccessibilityElementRef& element) {
  std::vector<std::string> found;
  for (const std::string_view attribute : labelAttributes) {
    auto label = string(element, attribute);
    if (label && !label->empty()) found.push_back(std::move(*label));
  }
  return found;
}

std::optional<TeamsUI::MicButton> TeamsUI::asMicButton(const AccessibilityElementRef& element) {
  const auto role = string(element, "AXRole");
  if (!role) return std::nullopt;
  if (!text::equal(*role, "AXButton") && !text::equal(*role, "AXCheckBox")) return std::nullopt;
  const std::string identifier = string(element, "AXDOMIdentifier").value_or("");
  const bool isMicrophoneButton = text::equal(identifier, "microphone-button");
  for (std::string& label : labels(element)) {
    const std::string low = text::lowercased(label);
    if (saysMuteOrUnmute(low) && (namesTheMicrophone(low) || isMicrophoneButton)) {
      return MicButton{element, std::move(label)};
    }
  }
  return std::nullopt;
}

void TeamsUI::walk(const AccessibilityElementRef& root, const Visit& visit) {
  std::vector<std::pair<AccessibilityElementRef, std::size_t>> queue{{root, 0}};
  for (std::size_t next = 0; next < queue.size() && next < maxVisits; ++next) {
    const auto [element, depth] = queue[next];
    if (visit(element, depth)) return;
    AttributeValue value;
    const auto status = platform().accessibility.copyAttributeValue(element, "AXChildren", value);
    if (status != accessibility::success) continue;
    if (const auto* children = std::get_if<std::vector<AccessibilityElementRef>>(&value)) {
      for (const auto& child : *children) queue.emplace_back(child, depth + 1);
    }
  }
}

std::optional<TeamsUI::MicButton> TeamsUI::micButton(const AccessibilityElementRef& app) {
  if (cached) {
    if (auto button = asMicButton(cached)) return button;
  }
  cache(nullptr);
  std::optional<MicButton> found;
  walk(app, [&found](const AccessibilityElementRef& element, std::size_t) {
    found = asMicButton(element);
    return found.has_value();
  });
  if (found) cache(found->element);
  return found;
}

bool TeamsUI::offersToUnmute(const MicButton& button) {
  return text::hasPrefix(text::lowercased(button.label), "unmute");
}

}  // namespace hushbox
