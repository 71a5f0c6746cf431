// Counts the D-Bus calls that a poll of Teams' mute state makes on a real browser while the button
// is cached, and those of the first search and of a press. Exits with 1 if a poll exceeds its
// limit.

#include <cstdio>
#include <exception>
#include <optional>

#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/session/JournalLog.h"
#include "rehearsal/Desk.h"
#include "rehearsal/Waiting.h"
#include "teams/TeamsUI.h"

namespace hushbox {
namespace {

using rehearsal::Milliseconds;

/// Per poll.
constexpr unsigned long long callLimit = 12;

int measure() {
  rehearsal::Desk desk;
  rehearsal::MeetingPage meeting(desk.browser());
  SessionBusConnection bus;
  JournalLog log;
  LinuxPlatform linuxPlatform(bus, log);
  const AtspiAccessibilityTree& tree = linuxPlatform.accessibility;
  const auto count = [&tree](auto operation) {
    const auto before = tree.callCount();
    operation();
    return static_cast<unsigned long long>(tree.callCount() - before);
  };
  std::optional<bool> state;
  std::printf("first search for Teams:     %3llu calls\n",
              count([&] { state = TeamsUI::currentMuteState(); }));
  if (state != std::optional(false)) {
    std::fprintf(stderr, "Teams was not found.\n");
    return 1;
  }
  unsigned long long maxCalls = 0;
  for (int tick = 0; tick < 20; ++tick) {
    rehearsal::letPass(Milliseconds{200});
    maxCalls = std::max(maxCalls, count([] { TeamsUI::currentMuteState(); }));
  }
  std::printf("poll with cached button:    %3llu calls at most (limit %llu)\n", maxCalls,
              callLimit);
  std::printf("press with cached button:   %3llu calls\n",
              count([] { TeamsUI::setMuted(std::nullopt); }));
  return maxCalls <= callLimit ? 0 : 1;
}

}  // namespace
}  // namespace hushbox

int main() {
  try {
    return hushbox::measure();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "poll_tick_calls: %s\n", error.what());
    return 1;
  }
}
