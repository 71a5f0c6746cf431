#include "rehearsal/soak/SoakModel.h"

namespace hushbox::rehearsal {

void SoakModel::plugIn(bool isSilent, std::optional<long> level) {
  isPluggedIn_ = true;
  isSilent_ = isSilent;
  isHeadsetMuted_ = isSilent;
  level_ = level;
}

void SoakModel::unplug() {
  isPluggedIn_ = false;
  isInCall_ = false;
  isSilent_ = false;
}

void SoakModel::startCall() {
  isInCall_ = true;
  follow();
}

void SoakModel::endCall() {
  isInCall_ = false;
}

void SoakModel::pressButton() {
  isSilent_ = !isSilent_;
  isHeadsetMuted_ = isSilent_;
  // After a bounce Teams may be in that state already.
  if (teamsMuted_ != isSilent_) pressInTeams();
}

void SoakModel::pressButtonWhileFrozen() {
  isSilent_ = !isSilent_;
  isHeadsetMuted_ = isSilent_;
}

void SoakModel::thaw() {
  if (isInCall_) follow();
}

void SoakModel::bounce() {
  pressInTeams();
}

void SoakModel::clickInTeams() {
  pressInTeams();
  if (isInCall_) follow();
}

void SoakModel::adopt(const SoakState& seen) {
  isSilent_ = seen.isSilent;
  isHeadsetMuted_ = seen.isSilent;
  if (seen.level) level_ = seen.level;
  teamsMuted_ = seen.teamsMuted;
  presses_ = seen.presses;
}

SoakState SoakModel::expected() const {
  SoakState state{.teamsMuted = teamsMuted_, .presses = presses_, .isSilent = isSilent_};
  if (isPluggedIn_ && !isSilent_) state.level = level_;
  if (!isPluggedIn_) {
    state.row = "Jabra not connected";
  } else if (!isInCall_) {
    state.row = "Not on a call";
  } else {
    state.row = teamsMuted_ ? "On a call — muted" : "On a call — live";
  }
  return state;
}

void SoakModel::pressInTeams() {
  teamsMuted_ = !teamsMuted_;
  ++presses_;
}

void SoakModel::follow() {
  if (isHeadsetMuted_ == teamsMuted_) return;
  isHeadsetMuted_ = teamsMuted_;
  isSilent_ = teamsMuted_;
}

}  // namespace hushbox::rehearsal
