#pragma once

#include <chrono>

namespace hushbox::rehearsal {

/// The speakerphone's volume and mute switch after a change, and when a client received it.
struct VolumeChange {
  double volume = 0.0;  ///< Fraction of full volume; exactly 0.0 at the bottom.
  bool muteSwitch = false;
  std::chrono::steady_clock::time_point when;
};

}  // namespace hushbox::rehearsal
