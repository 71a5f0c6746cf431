#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/simulated/SimulatedAccessibilityTree.h"
#include "platform/simulated/SimulatedMainLoop.h"
#include "platform/simulated/SimulatedWorkspace.h"

namespace hushbox {

/// Teams on the simulated desk: an application with a chat window and, during a meeting, a meeting
/// window with a microphone button whose label says what pressing it does.
class SimulatedTeams {
 public:
  SimulatedTeams(SimulatedMainLoop& loop, SimulatedAccessibilityTree& tree,
                 SimulatedWorkspace& workspace)
      : loop_(loop), tree_(tree), workspace_(workspace) {}

  /// Starts the application. Its element in the journal is "application <process identifier>".
  void launch(std::string bundleIdentifier = "com.microsoft.teams2",
              std::int32_t processIdentifier = 501);
  void quit();
  void freeze() { tree_.freeze(processIdentifier_); }
  void thaw() { tree_.thaw(processIdentifier_); }

  /// Opens the meeting window, starting the application if necessary. The elements in the journal
  /// are "meeting", "toolbar" and "microphone".
  void joinMeeting(bool muted = false);
  void leaveMeeting();

  /// Whether the user is muted in the meeting.
  bool isMuted() const { return muted_; }
  /// The user mutes or unmutes by mouse or keyboard.
  void setMuted(bool muted);

  /// How often the button was pressed successfully through the accessibility tree.
  std::size_t pressCount() const { return pressCount_; }
  /// What pressing the button returns; anything but success presses nothing.
  void setPressStatus(AccessibilityError status) { pressStatus_ = status; }
  /// How long after a press the label changes; initially at once.
  void setPressLatency(std::optional<TimeInterval> latency) { pressLatency_ = latency; }

  /// How long the application takes over a press; initially no time. The press lasts until then, or
  /// until its messaging timeout, and the label changes no earlier.
  void setPressDuration(TimeInterval duration) { pressDuration_ = duration; }

  std::int32_t processIdentifier() const { return processIdentifier_; }
  /// The application and the microphone button; null if there is none.
  const SimulatedElementRef& application() const { return application_; }
  const SimulatedElementRef& microphone() const { return microphone_; }

  static constexpr const char* muteLabel = "Mute mic (⌘+Shift+M)";
  static constexpr const char* unmuteLabel = "Unmute mic (⌘+Shift+M)";

 private:
  AccessibilityError press(std::string_view action);

  SimulatedMainLoop& loop_;
  SimulatedAccessibilityTree& tree_;
  SimulatedWorkspace& workspace_;
  std::int32_t processIdentifier_ = 0;
  SimulatedElementRef application_;
  SimulatedElementRef meeting_;
  SimulatedElementRef microphone_;
  bool muted_ = false;
  std::size_t pressCount_ = 0;
  AccessibilityError pressStatus_ = accessibility::success;
  std::optional<TimeInterval> pressLatency_;
  TimeInterval pressDuration_{};
};

}  // namespace hushbox
