#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Platform.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedAccessibilityTree.h"
#include "platform/simulated/SimulatedAudioHardware.h"
#include "platform/simulated/SimulatedChildProcessFactory.h"
#include "platform/simulated/SimulatedLocale.h"
#include "platform/simulated/SimulatedLoginItem.h"
#include "platform/simulated/SimulatedMainLoop.h"
#include "platform/simulated/SimulatedMenuBar.h"
#include "platform/simulated/SimulatedTeams.h"
#include "platform/simulated/SimulatedUnifiedLog.h"
#include "platform/simulated/SimulatedUserNotifications.h"
#include "platform/simulated/SimulatedWorkspace.h"

namespace hushbox {

/// A whole desk in memory, in scope as the platform for its own lifetime.
///
/// Its destruction calls everything that is still in place once (timers, listeners, delayed items,
/// posted blocks, completions, menu rows) and checks that nothing happens: whatever uses the desk
/// must have been destroyed before.
class SimulatedDesk {
 public:
  SimulatedDesk();
  ~SimulatedDesk();
  SimulatedDesk(const SimulatedDesk&) = delete;
  SimulatedDesk& operator=(const SimulatedDesk&) = delete;

  /// Advances the clock; see SimulatedMainLoop.
  void advance(TimeInterval interval) { loop.advance(interval); }

  /// Plugs the speakerphone in, not in use, with that input volume.
  AudioObjectID plugSpeakerphone(float volume = 0.8F);

  /// Makes the first read of a device's name succeed, which is that of the search, and all others
  /// fail.
  void makeNameReadableOnce();

  /// Makes the power-management tool report the speakerphone's battery at `level` percent.
  void setBattery(int level, const std::string& state = "discharging");
  /// Makes the power-management tool print `report`.
  void setBatteryReport(std::string report);

  /// Does the check described above and ends the platform's scope; the destructor calls it. Each of
  /// these is a violation: a call to the platform, an announcement, a remaining subscriber. Two
  /// things are exempt: background blocks, which keep their owners alive on purpose and finish
  /// first, and log records written by late completions.
  void close();

  Journal journal;
  SimulatedMainLoop loop{journal};
  SimulatedAudioHardware audio{journal, loop};
  SimulatedAccessibilityTree accessibility{journal, loop};
  SimulatedWorkspace workspace{journal, loop};
  SimulatedChildProcessFactory childProcesses{journal, loop};
  SimulatedUserNotifications notifications{journal, loop};
  SimulatedLoginItem loginItem{journal, loop};
  SimulatedMenuBar menuBar{journal, loop};
  SimulatedUnifiedLog log{journal};
  SimulatedLocale locale{journal, loop};
  SimulatedTeams teams{loop, accessibility, workspace};

  static constexpr const char* speakerphoneName = "Jabra Speak2 75";

 private:
  void checkThatNothingHappens();
  /// Runs `action` and reports a violation if it calls the platform. `source` describes the caller
  /// in the message; calls to the journal's part `exempt` are allowed.
  void expectNoCalls(const std::string& source, std::string_view exempt,
                     const std::function<void()>& action);

  std::size_t subscribersAtOpening_;
  std::optional<PlatformScope> scope_;
};

}  // namespace hushbox
