#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hushbox {

/// What must hold in every call, checked on the log records of each turn of the main loop alone:
/// - The status line is one of the known ones.
/// - A turn raises at most one button event, and only for a volume change or a mute that was due.
/// - "Mute" comes exactly 0.3 seconds after a drop that was not an echo; that drop raises nothing
/// else.
/// - "Toggle" and "Unmute" come with a rise of the volume that is not an echo.
/// - A change is an echo exactly within 0.5 seconds of a write.
/// - Teams is pressed only for a button event, and the device written only to follow Teams.
class CallInvariants {
 public:
  /// Checks one turn. Returns what is wrong, or nullopt.
  std::optional<std::string> check(std::chrono::nanoseconds now,
                                   const std::vector<std::string>& records);

  /// The machine slept until `now`: what was due by then runs late.
  void machineSlept(std::chrono::nanoseconds now) { awakeSince_ = now; }

 private:
  using Failure = std::optional<std::string>;
  /// What the turn has logged so far.
  struct Turn {
    std::chrono::nanoseconds now{};
    int statuses = 0;
    bool volumeChanged = false;
    bool dropped = false;
    bool isEcho = false;
    bool bounced = false;
    /// If the last record was a press: whether it succeeded. If it was a write: whether of a mute.
    std::optional<bool> pressSucceeded = std::nullopt;
    std::optional<bool> written = std::nullopt;
  };

  Failure checkRecord(Turn& turn, std::string_view record);
  Failure checkVolume(Turn& turn, std::string_view text);
  Failure checkStatus(Turn& turn, std::string_view status);
  Failure checkEvent(const Turn& turn, std::string_view verb);
  Failure checkMute(const Turn& turn);
  bool mayBeLate(std::chrono::nanoseconds drop) const {
    return awakeSince_ && drop <= *awakeSince_;
  }

  std::optional<std::chrono::nanoseconds> lastWrite_;
  /// When the volume dropped to zero, not as an echo, since the last button event.
  std::vector<std::chrono::nanoseconds> drops_;
  std::optional<std::chrono::nanoseconds> awakeSince_;
};

}  // namespace hushbox
