#include "tests/scenarios/CallState.h"

#include <sstream>

namespace hushbox {
namespace {

std::string show(bool value) {
  return value ? "true" : "false";
}

std::string show(std::optional<bool> value) {
  return value ? show(*value) : "unknown";
}

std::string show(const std::string& value) {
  return '"' + value + '"';
}

std::string show(std::size_t value) {
  return std::to_string(value);
}

std::string show(float value) {
  return std::to_string(value);
}

std::string show(const std::vector<std::string>& values) {
  std::string text;
  for (const std::string& value : values) text += "\n    " + value;
  return text.empty() ? "none" : text;
}

}  // namespace

std::string differences(const CallState& expected, const CallState& actual) {
  std::ostringstream text;
  const auto compare = [&](const char* name, const auto& wanted, const auto& found) {
    if (wanted == found) return;
    text << "  " << name << ": expected " << show(wanted) << ", got " << show(found) << '\n';
  };
  compare("connected", expected.connected, actual.connected);
  compare("headset muted", expected.headsetMuted, actual.headsetMuted);
  compare("in call", expected.inCall, actual.inCall);
  compare("Teams muted", expected.teamsMuted, actual.teamsMuted);
  compare("muted", expected.muted, actual.muted);
  compare("status", expected.status, actual.status);
  compare("announcements", expected.announcements, actual.announcements);
  compare("volume", expected.volume, actual.volume);
  compare("muted in Teams", expected.mutedInTeams, actual.mutedInTeams);
  compare("presses", expected.presses, actual.presses);
  compare("records", expected.records, actual.records);
  return text.str();
}

}  // namespace hushbox
