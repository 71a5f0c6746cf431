#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Time.h"
#include "tests/platform/macos/doubles/AccessibilityDouble.h"

namespace hushbox {

/// Teams as a running application with a chat window and, during a meeting, a second window. The
/// label of its microphone button says what a press does.
class MacTeams {
 public:
  static constexpr std::int32_t processIdentifier = 501;
  static constexpr const char* muteLabel = "Mute mic (⌘+Shift+M)";
  static constexpr const char* unmuteLabel = "Unmute mic (⌘+Shift+M)";

  void launch();
  void quit();
  /// Launches Teams if it is not running.
  void joinMeeting(bool muted = false);
  void leaveMeeting();

  bool isMuted() const { return muted_; }
  /// The user mutes or unmutes with the mouse.
  void setMuted(bool muted);

  std::size_t pressCount() const { return pressCount_; }
  /// Sets how long after a press the button's label changes; initially at once.
  void setLabelDelay(TimeInterval delay) { labelDelay_ = delay; }
  /// Sets the status that a press returns; any status except 0 presses nothing.
  void setPressStatus(std::int32_t status) { pressStatus_ = status; }

 private:
  std::int32_t perform(const std::string& action);
  void showLabel();

  doubles::AXNodeRef application_;
  doubles::AXNodeRef meeting_;
  doubles::AXNodeRef microphone_;
  bool muted_ = false;
  std::size_t pressCount_ = 0;
  std::int32_t pressStatus_ = 0;
  TimeInterval labelDelay_{};
  Instant labelDue_{};
};

}  // namespace hushbox
