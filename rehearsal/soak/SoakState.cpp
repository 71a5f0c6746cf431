#include "rehearsal/soak/SoakState.h"

namespace hushbox::rehearsal {

bool SoakState::fits(const SoakState& expected) const {
  return teamsMuted == expected.teamsMuted && presses == expected.presses &&
         isSilent == expected.isSilent && (!expected.level || level == expected.level) &&
         row == expected.row;
}

std::string SoakState::describe() const {
  return std::string("Teams ") + (teamsMuted ? "muted" : "live") + " after " +
         std::to_string(presses) + " presses, speakerphone " + (isSilent ? "silent" : "audible") +
         (level ? " at " + std::to_string(*level) + " %" : "") + ", menu \"" + row + '"';
}

}  // namespace hushbox::rehearsal
