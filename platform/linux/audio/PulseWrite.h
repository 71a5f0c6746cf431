#pragma once

#include <pulse/volume.h>

#include <cstdint>
#include <optional>

namespace hushbox {

/// A request to change a source. What is absent stays as it is.
struct PulseWrite {
  std::uint32_t source;
  std::optional<pa_cvolume> volume;
  std::optional<bool> muteSwitch;
  /// The connection that the index belongs to; on another one the request is dropped.
  std::uint32_t connection = 0;
};

}  // namespace hushbox
