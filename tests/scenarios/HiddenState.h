#pragma once

#include <string>

#include "coordinator/MuteCoordinator.h"

namespace hushbox {

/// Reads the private members of the core on which its future depends. The core's classes name it as
/// their friend.
struct HiddenState {
  /// Appends them, with times relative to `now`. Times that no longer matter are left out, so that
  /// states with the same future look the same.
  static void append(const MuteCoordinator& coordinator, Instant now, std::string& to);

  /// Returns the attached device, or 0.
  static AudioObjectID deviceOf(const MuteCoordinator& coordinator);
};

}  // namespace hushbox
