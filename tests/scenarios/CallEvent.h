#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace hushbox {

/// Something that happens around the program during a call: to the device, to Teams, or to the
/// clock. A plain value, so that a history can be generated, shortened, printed and read back.
struct CallEvent {
  enum class Kind {
    /// Time passes and the main loop runs; `amount` in nanoseconds.
    pass,
    /// The machine sleeps; `amount` in nanoseconds. Nothing runs before the next `pass`.
    sleep,
    /// The device's input volume becomes `amount` percent.
    volume,
    /// The volume's listeners are called without a change.
    notify,
    /// A process starts (1) or stops (0) using the device.
    use,
    /// The device is plugged in at a volume of `amount` percent, or unplugged.
    plug,
    unplug,
    /// The user mutes (1) or unmutes (0) Teams.
    teams,
    /// A meeting starts, muted (1) or not (0), or ends. Starts Teams if necessary.
    join,
    leave,
    quit,
    /// The Accessibility permission is granted (1) or revoked (0).
    trust,
    /// Presses of Teams' button succeed (1) or fail (0).
    pressable,
    /// Teams' label changes `amount` nanoseconds after a press.
    pressDelay,
    /// The device's volume can be read (1) or not (0).
    readable,
    /// The device's volume can be written (1) or not (0).
    writable,
    /// Whether the device is in use can be read (1) or not (0).
    useReadable,
    /// Changes of the audio hardware are announced `amount` nanoseconds later.
    announceDelay,
    /// Another program restores the volume `amount` nanoseconds after it drops to zero; -1: never.
    restoreDelay
  };

  Kind kind = Kind::pass;
  std::int64_t amount = 0;

  friend bool operator==(const CallEvent&, const CallEvent&) = default;
};

using CallHistory = std::vector<CallEvent>;

/// Returns `length` events, at least four: the start of a call, and then random ones. A seed gives
/// the same history with every standard library.
CallHistory randomCallHistory(std::uint64_t seed, std::size_t length);

/// Returns the history in one line, such as "join 0, use 1, volume 0, pass 300000000".
std::string print(const CallHistory& history);

/// Reads the format that `print` writes. Returns nullopt if `text` is not in it.
std::optional<CallHistory> parseCallHistory(std::string_view text);

}  // namespace hushbox
