#pragma once

#include <optional>
#include <string>

namespace hushbox {

/// An audio device as data.
struct SimulatedDevice {
  /// Absent: reading it fails, as with a name that is no text.
  std::optional<std::string> name = std::nullopt;
  /// Absent: the device has no input volume.
  std::optional<float> inputVolume = std::nullopt;
  /// Whether some process is using it.
  bool running = false;
};

}  // namespace hushbox
