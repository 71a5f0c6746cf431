#pragma once

#include "platform/AudioHardware.h"

namespace hushbox {

/// One property of one audio object. Listeners and changes refer to it.
struct AudioProperty {
  AudioObjectID object;
  AudioPropertyAddress address;

  friend bool operator==(const AudioProperty&, const AudioProperty&) = default;
};

}  // namespace hushbox
