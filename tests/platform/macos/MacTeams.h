#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/platform/macos/doubles/AccessibilityDouble.h"

namespace hushbox {

/// Teams among the running applications, with a window for its chats and during a meeting a second
/// one, whose microphone button says what a press would do.
class MacTeams {
 public:
  static constexpr std::int32_t processIdentifier = 501;
  static constexpr const char* muteLabel = "Mute mic (⌘+Shift+M)";
  static constexpr const char* unmuteLabel = "Unmute mic (⌘+Shift+M)";

  void launch();
  void quit();
  /// Launches Teams where it does not run yet.
  void joinMeeting(bool muted = false);
  void leaveMeeting();

  bool isMuted() const { return muted_; }
  /// The user mutes or unmutes with the mouse.
  void setMuted(bool muted);

  std::size_t pressCount() const { return pressCount_; }
  /// What a press returns; anything but 0 presses nothing.
  void setPressStatus(std::int32_t status) { pressStatus_ = status; }

 private:
  std::int32_t perform(const std::string& action);

  doubles::AXNodeRef application_;
  doubles::AXNodeRef meeting_;
  doubles::AXNodeRef microphone_;
  bool muted_ = false;
  std::size_t pressCount_ = 0;
  std::int32_t pressStatus_ = 0;
};

}  // namespace hushbox
