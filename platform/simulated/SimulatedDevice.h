#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace hushbox {

/// An audio device of the simulated hardware.
struct SimulatedDevice {
  /// If absent, reading the name fails.
  std::optional<std::string> name = std::nullopt;
  /// From 0 to 1, unless a test plugs in an odd device; absent if the device has no input volume.
  std::optional<float> inputVolume = std::nullopt;
  /// Not zero if a process is using the device.
  std::uint32_t running = 0;
};

}  // namespace hushbox
