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
/// At its end everything that is still in place (timers, listeners, delayed items, posted blocks,
/// completions, menu rows) is fired once, and nothing must happen then: whatever was built on the
/// desk has to be gone by that time.
class SimulatedDesk {
 public:
  SimulatedDesk();
  ~SimulatedDesk();
  SimulatedDesk(const SimulatedDesk&) = delete;
  SimulatedDesk& operator=(const SimulatedDesk&) = delete;

  /// Moves the clock on; see SimulatedMainLoop.
  void advance(TimeInterval interval) { loop.advance(interval); }

  /// Plugs the speakerphone in, unused and at that volume.
  AudioObjectID plugSpeakerphone(float volume = 0.8F);

  /// The power-management tool reports the speakerphone at that level and in that state.
  void setBattery(int level, const std::string& state = "discharging");
  /// The power-management tool prints this.
  void setBatteryReport(std::string report);

  /// Ends the platform's scope after the check described above. Reports a violation for each of: a
  /// call to the platform, an announcement, a subscriber that is left. Exempt are background blocks
  /// (they keep their owners on purpose and are let finish first) and the log records of
  /// completions that answer after their asker has gone. Called by the destructor at the latest.
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
  /// `exempt` is the part of the journal whose calls are allowed.
  void expectNoCalls(const std::string& whence, std::string_view exempt,
                     const std::function<void()>& action);

  std::size_t subscribersAtOpening_;
  std::optional<PlatformScope> scope_;
};

}  // namespace hushbox
