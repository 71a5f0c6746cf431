// Counts the D-Bus calls that a poll of Teams' mute state makes on a real browser while the button
// is cached, and those of the first search and of a press. Exits with 1 if a poll exceeds its
// limit.

#include <cstdio>
#include <exception>
#include <optional>

#include "platform/Platform.h"
#include "platform/linux/accessibility/AtspiAccessibilityTree.h"
#include "platform/linux/audio/PulseAudioHardware.h"
#include "platform/linux/locale/SessionLocale.h"
#include "platform/linux/mainloop/GLibMainLoop.h"
#include "platform/linux/menubar/StatusNotifierMenuBar.h"
#include "platform/linux/processes/SpawnedChildProcessFactory.h"
#include "platform/linux/session/AutostartLoginItem.h"
#include "platform/linux/session/DesktopNotifications.h"
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
  GLibMainLoop mainLoop;
  JournalLog log;
  PulseAudioHardware audio;
  AtspiAccessibilityTree tree;
  SpawnedChildProcessFactory childProcesses{ChildProcessRules{}};
  DesktopNotifications notifications(mainLoop);
  AutostartLoginItem loginItem(AutostartLoginItem::sessionFolder(),
                               AutostartLoginItem::runningProgram());
  StatusNotifierMenuBar menuBar(log);
  SessionLocale locale;
  const PlatformScope scope({mainLoop, audio, tree, tree.workspace(), childProcesses, notifications,
                             loginItem, menuBar, log, locale});
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
