#pragma once

#include <optional>

#include "rehearsal/soak/SoakState.h"

namespace hushbox::rehearsal {

/// The rules of the product in the few lines that a soak needs: what the desk shows once Hushbox
/// has reacted to an event. It is written down independently of the program.
class SoakModel {
 public:
  /// A speakerphone that is plugged in, and the level that it has while it is audible; nullopt if
  /// unknown.
  void plugIn(bool isSilent, std::optional<long> level);
  void unplug();
  /// Hushbox reads Teams from now on, and makes the speakerphone follow.
  void startCall();
  void endCall();

  /// The button silences the speakerphone or makes it audible again.
  void pressButton();
  /// The same while Teams does not reply: the press is lost.
  void pressButtonWhileFrozen();
  /// Teams replies again: the speakerphone follows it, even if it did not before.
  void thaw();
  /// The button was pressed and the calling program put the volume back. Only while audible.
  void bounce();
  void clickInTeams();
  /// The user changes the level. Only while audible.
  void setLevel(long level) { level_ = level; }

  /// Starts again from what the desk shows, after a fault.
  void adopt(const SoakState& seen);

  bool isPluggedIn() const { return isPluggedIn_; }
  bool isInCall() const { return isInCall_; }
  bool isSilent() const { return isSilent_; }
  std::optional<long> level() const { return level_; }
  SoakState expected() const;

 private:
  void pressInTeams();
  void follow();

  bool isPluggedIn_ = false;
  bool isInCall_ = false;
  bool isSilent_ = false;
  std::optional<long> level_;
  /// Whether Hushbox takes the speakerphone for muted. That differs from `isSilent_` only for a
  /// moment, but Teams may be muted while the speakerphone is not: after a bounce.
  bool isHeadsetMuted_ = false;
  bool teamsMuted_ = false;
  std::size_t presses_ = 0;
};

}  // namespace hushbox::rehearsal
