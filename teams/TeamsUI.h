#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/AccessibilityTree.h"

namespace hushbox {

/// The remote control of Microsoft Teams: finds the microphone button of the meeting window in the
/// accessibility tree, reads the mute state from its label and presses it.
///
/// Main thread only; each operation blocks while the accessibility calls run. Every accessibility
/// failure counts as an absent value, and nothing is retried.
class TeamsUI {
 public:
  /// What became of asking Teams to mute, unmute or toggle.
  enum class Result {
    pressed,
    /// Teams is in the wanted state already; nothing was pressed.
    alreadySynced,
    /// The process has no Accessibility permission.
    notTrusted,
    teamsNotRunning,
    /// No microphone button was found, or the press reported an error.
    noMeeting
  };

  TeamsUI() = delete;

  /// Brings Teams into the wanted state, true for muted; without one presses once whatever the
  /// state.
  static Result setMuted(std::optional<bool> wanted);

  /// Whether Teams is muted; empty when it cannot be told. Presses nothing.
  static std::optional<bool> currentMuteState();

 private:
  /// A microphone button that was found, with the label that told it, its case unchanged.
  struct MicButton {
    AccessibilityElementRef element;
    std::string label;
  };

  using Visit = std::function<bool(const AccessibilityElementRef& element, std::size_t depth)>;

  static AccessibilityElementRef teamsApp();
  static std::optional<std::string> string(const AccessibilityElementRef& element,
                                           std::string_view attribute);
  static std::vector<std::string> labels(const AccessibilityElementRef& element);
  static std::optional<MicButton> asMicButton(const AccessibilityElementRef& element);
  /// Breadth first from `root`; `visit` ends the walk by returning true.
  static void walk(const AccessibilityElementRef& root, const Visit& visit);
  static std::optional<MicButton> micButton(const AccessibilityElementRef& app);
  static bool offersToUnmute(const MicButton& button);
};

}  // namespace hushbox
