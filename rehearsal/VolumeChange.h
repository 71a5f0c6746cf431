#pragma once

#include <chrono>

namespace hushbox::rehearsal {

/// What the speakerphone's volume and mute switch came to be, and when a client learnt of it.
struct VolumeChange {
  double volume = 0.0;  ///< Fraction of full volume; exactly 0.0 when at the bottom.
  bool muteSwitch = false;
  std::chrono::steady_clock::time_point when;
};

}  // namespace hushbox::rehearsal
