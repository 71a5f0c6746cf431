#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace hushbox::rehearsal {

/// What a person could see on the desk between two events.
struct SoakState {
  bool teamsMuted = false;
  /// How often the microphone button of the meeting was pressed, by Hushbox or with the mouse.
  std::size_t presses = 0;
  /// Whether the speakerphone is silent by its level or its mute switch; false if unplugged.
  bool isSilent = false;
  /// The speakerphone's level in percent while it is plugged in and not silent. In an expected
  /// state, nullopt stands for any level.
  std::optional<long> level{};
  /// The first row of Hushbox's menu.
  std::string row{};

  /// Whether this is what `expected` says.
  bool fits(const SoakState& expected) const;
  std::string describe() const;
};

}  // namespace hushbox::rehearsal
