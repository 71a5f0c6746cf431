#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace hushbox {

/// Everything about a call that can be observed from outside, after one event.
struct CallState {
  bool connected = false;
  std::optional<bool> headsetMuted;
  bool inCall = false;
  std::optional<bool> teamsMuted;
  bool muted = false;
  /// The status line, with its time.
  std::string status;
  /// How many changes have been announced so far.
  std::size_t announcements = 0;
  /// The device's input volume, 0 to 1; 0 without a device.
  float volume = 0;
  /// Whether the user is muted in Teams itself, and how often its button was pressed.
  bool mutedInTeams = false;
  std::size_t presses = 0;
  /// The log records since the last event, as "category: text".
  std::vector<std::string> records;

  friend bool operator==(const CallState&, const CallState&) = default;
};

/// Returns one line per member that differs; empty if the states are equal.
std::string differences(const CallState& expected, const CallState& actual);

}  // namespace hushbox
