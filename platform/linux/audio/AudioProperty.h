#pragma once

#include "platform/AudioHardware.h"

namespace hushbox {

/// One property of one audio object: what listeners are kept for, and what a change is of.
struct AudioProperty {
  AudioObjectID object;
  AudioPropertyAddress address;

  friend bool operator==(const AudioProperty&, const AudioProperty&) = default;
};

}  // namespace hushbox
