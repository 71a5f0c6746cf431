#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/AccessibilityTree.h"

namespace hushbox {

/// Controls Microsoft Teams through its accessibility tree: finds the microphone button of the
/// meeting window, reads the mute state from the button's label, and presses the button.
///
/// Main thread only. Each operation blocks for the duration of its accessibility calls, each
/// limited to 1 second. A failed call counts as an absent value; nothing is retried. The button
/// found last is kept for the next call, until the platform goes out of scope.
class TeamsUI {
 public:
  /// The outcome of `setMuted`.
  enum class Result {
    /// The button was pressed.
    pressed,
    /// Teams was already in the wanted state; nothing was pressed.
    alreadySynced,
    /// The process has no Accessibility permission.
    notTrusted,
    teamsNotRunning,
    /// No microphone button was found, or the press failed.
    noMeeting
  };

  TeamsUI() = delete;

  /// Mutes (true) or unmutes (false) Teams by pressing the button if it is in the other state.
  /// nullopt presses the button once in either state.
  static Result setMuted(std::optional<bool> wanted);

  /// Returns whether Teams is muted, or nullopt if no microphone button can be read. Never presses.
  static std::optional<bool> currentMuteState();

 private:
  /// A microphone button and the label that identified it, in its original case.
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
  /// Visits the tree breadth-first from `root`; a `visit` that returns true ends the walk.
  static void walk(const AccessibilityElementRef& root, const Visit& visit);
  static std::optional<MicButton> micButton(const AccessibilityElementRef& app);
  static bool offersToUnmute(const MicButton& button);
};

}  // namespace hushbox
