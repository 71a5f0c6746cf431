#include "tests/scenarios/CallInvariants.h"

#include <algorithm>
#include <array>
#include <utility>

namespace hushbox {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::nanoseconds bounceWindow = 300ms;
constexpr std::chrono::nanoseconds echoWindow = 500ms;

constexpr std::array<std::string_view, 3> verbs = {"Mute", "Unmute", "Toggle"};
constexpr std::string_view pressed = " → Teams";
constexpr std::array<std::string_view, 5> outcomes = {
    pressed, " — Teams already in sync", " — grant Accessibility to Hushbox",
    " — Teams not running", " — no Teams meeting found"};
constexpr std::string_view followedMute = "Teams muted → Jabra";
constexpr std::string_view followedUnmute = "Teams unmuted → Jabra";

/// Removes `prefix` from the start of `text`. Returns whether it was there.
bool skip(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

}  // namespace

std::optional<std::string> CallInvariants::check(std::chrono::nanoseconds now,
                                                 const std::vector<std::string>& records) {
  Turn turn{.now = now};
  for (const std::string& record : records) {
    if (auto failure = checkRecord(turn, record)) return *failure + ": " + record;
  }
  if (turn.pressSucceeded || turn.written) return "a press or a write without a status line";
  if (turn.bounced && turn.statuses == 0) return "a bounce without a toggle";
  return std::nullopt;
}

CallInvariants::Failure CallInvariants::checkRecord(Turn& turn, std::string_view record) {
  if (skip(record, "coordinator: ")) return checkStatus(turn, record);
  if (turn.pressSucceeded || turn.written) return "no status line after a press or a write";
  if (skip(record, "jabra: Jabra input volume ")) return checkVolume(turn, record);
  if (skip(record, "jabra: Mute bounced back")) {
    if (!turn.volumeChanged || turn.dropped || turn.isEcho) return "a bounce without a rise";
    turn.bounced = true;
  } else if (skip(record, "jabra: Set Jabra input volume to ")) {
    if (turn.volumeChanged) return "a write for a volume change";
    lastWrite_ = turn.now;
    turn.written = record.starts_with("0.000000 ");
  } else if (skip(record, "teams-ui: Pressed ")) {
    turn.pressSucceeded = record.ends_with("-> 0");
  }
  return std::nullopt;
}

CallInvariants::Failure CallInvariants::checkVolume(Turn& turn, std::string_view text) {
  if (std::exchange(turn.volumeChanged, true)) return "two volume changes in one turn";
  turn.dropped = text.find("muted=true") != std::string_view::npos;
  turn.isEcho = text.ends_with("selfInitiated=true");
  const bool isEcho = lastWrite_ && turn.now - *lastWrite_ < echoWindow;
  if (turn.isEcho != isEcho) return "not an echo exactly within 0.5 s of a write";
  if (turn.dropped && !turn.isEcho) drops_.push_back(turn.now);
  return std::nullopt;
}

CallInvariants::Failure CallInvariants::checkStatus(Turn& turn, std::string_view status) {
  if (turn.statuses++ > 0) return "two status lines in one turn";
  const auto pressSucceeded = std::exchange(turn.pressSucceeded, std::nullopt);
  if (const auto written = std::exchange(turn.written, std::nullopt)) {
    if (status == (*written ? followedMute : followedUnmute)) return std::nullopt;
    return "a write of another state";
  }
  // Without a device there is no write.
  if (status == followedMute || status == followedUnmute) return "the device was not written";
  const auto verb = std::find_if(verbs.begin(), verbs.end(), [status](std::string_view one) {
    return status.starts_with(one) && status.substr(one.size()).starts_with(' ');
  });
  if (verb == verbs.end()) return "an unknown status line";
  const std::string_view outcome = status.substr(verb->size());
  if (std::find(outcomes.begin(), outcomes.end(), outcome) == outcomes.end()) {
    return "an unknown status line";
  }
  if ((pressSucceeded == true) != (outcome == pressed)) return "another outcome than the press's";
  return checkEvent(turn, *verb);
}

CallInvariants::Failure CallInvariants::checkEvent(const Turn& turn, std::string_view verb) {
  if (verb == "Mute") return checkMute(turn);
  if (!turn.volumeChanged || turn.dropped) return "an event without a rise";
  if (turn.isEcho) return "an event for an echo";
  if (turn.bounced != (verb == "Toggle")) return "not a toggle exactly after a bounce";
  const bool isInWindow = std::any_of(drops_.begin(), drops_.end(), [&](auto drop) {
    return mayBeLate(drop) || turn.now - drop <= bounceWindow;
  });
  if (turn.bounced && !isInWindow) return "a toggle without a drop";
  drops_.clear();
  return std::nullopt;
}

CallInvariants::Failure CallInvariants::checkMute(const Turn& turn) {
  if (turn.volumeChanged) return "a mute for a volume change";
  const auto drop = std::find_if(drops_.begin(), drops_.end(), [&](auto one) {
    const auto lasted = turn.now - one;
    return mayBeLate(one) ? lasted >= bounceWindow : lasted == bounceWindow;
  });
  if (drop == drops_.end()) return "a mute without a drop 0.3 s before";
  drops_.erase(drop);
  return std::nullopt;
}

}  // namespace hushbox
