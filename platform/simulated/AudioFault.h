#pragma once

#include <cstdint>
#include <optional>

#include "platform/AudioHardware.h"

namespace hushbox {

enum class AudioOperation {
  hasProperty,
  getPropertyDataSize,
  getPropertyData,
  getPropertyText,
  setPropertyData,
  addPropertyListener,
  removePropertyListener
};

/// How the simulated audio hardware is to fail.
struct AudioFault {
  AudioOperation operation = AudioOperation::getPropertyData;
  AudioPropertyAddress address = audio::inputVolume;
  /// What comes back instead of the work being done; the output stays untouched. `hasProperty`
  /// answers false and a listener isn't added, whatever the status. With 0 the work is done.
  AudioStatus status = audio::noError;
  /// Which object; absent for any.
  std::optional<AudioObjectID> object = std::nullopt;
  /// What `getPropertyDataSize` says the size is, right or wrong.
  std::optional<std::uint32_t> size = std::nullopt;
  /// How many calls fail; absent for all from now on.
  std::optional<int> times = std::nullopt;
};

}  // namespace hushbox
