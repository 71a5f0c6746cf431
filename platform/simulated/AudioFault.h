#pragma once

#include <cstdint>
#include <optional>

#include "platform/AudioHardware.h"
#include "platform/Time.h"

namespace hushbox {

/// The operations of AudioHardware.
enum class AudioOperation {
  hasProperty,
  getPropertyDataSize,
  getPropertyData,
  getPropertyText,
  setPropertyData,
  addPropertyListener,
  removePropertyListener
};

/// A failure or a delay to inject into the simulated audio hardware.
struct AudioFault {
  AudioOperation operation = AudioOperation::getPropertyData;
  AudioPropertyAddress address = audio::inputVolume;
  /// The status to return instead of doing the work; the output stays untouched. 0 does the work.
  /// `hasProperty` returns false and a listener is not added, whatever the status.
  AudioStatus status = audio::noError;
  /// The object whose calls fail; absent for any.
  std::optional<AudioObjectID> object = std::nullopt;
  /// The size that `getPropertyDataSize` returns, right or wrong.
  std::optional<std::uint32_t> size = std::nullopt;
  /// How many calls fail; absent for all of them.
  std::optional<int> times = std::nullopt;
  /// How long the call blocks before it fails or does the work.
  TimeInterval duration{};
};

}  // namespace hushbox
