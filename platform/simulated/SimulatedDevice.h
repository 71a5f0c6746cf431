#pragma once

#include <optional>
#include <string>

namespace hushbox {

/// An audio device of the simulated hardware.
struct SimulatedDevice {
  /// If absent, reading the name fails.
  std::optional<std::string> name = std::nullopt;
  /// From 0 to 1; absent if the device has no input volume.
  std::optional<float> inputVolume = std::nullopt;
  /// Whether a process is using the device.
  bool running = false;
};

}  // namespace hushbox
