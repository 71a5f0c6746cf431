#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "battery/BatteryMonitor.h"
#include "headset/JabraMonitor.h"
#include "platform/Image.h"
#include "platform/RegistrationToken.h"
#include "platform/Time.h"
#include "support/ChangePublisher.h"
#include "support/Lifetime.h"
#include "support/Published.h"
#include "support/Subscription.h"

namespace hushbox {

/// The centre of the program. It turns presses of the speakerphone's button into presses of Teams'
/// microphone button, makes the speakerphone follow Teams during a call, warns when a call starts
/// on a low battery, and publishes what the menu and the icon show.
///
/// The process has one, from start to exit. Main thread only; it blocks there during accessibility
/// calls to Teams. Nothing here fails: what the user should know becomes the status line.
class MuteCoordinator {
 public:
  MuteCoordinator();
  MuteCoordinator(const MuteCoordinator&) = delete;
  MuteCoordinator& operator=(const MuteCoordinator&) = delete;

  /// Announces every assignment of the members below and every change of both monitors, before it
  /// happens.
  ChangePublisher objectWillChange;

  const JabraMonitor& jabra() const { return jabra_; }
  const BatteryMonitor& battery() const { return *battery_; }

  /// The status line: the time of day, two spaces and what happened last. Without the time before
  /// the first event.
  const std::string& lastEvent() const { return lastEvent_.get(); }

  /// Teams' mute state as last read or set; empty if unknown, and outside a call from the next poll
  /// on.
  std::optional<bool> teamsMuted() const { return teamsMuted_.get(); }

  /// Whether the user is muted: Teams' state if known, else the headset's, else false.
  bool isMuted() const;

  /// Returns the icon for the current state: red if muted in a call, green if live, else a
  /// template.
  Image menuBarIcon() const;

 private:
  /// Of the search in tests/scenarios.
  friend struct HiddenState;

  void jabraButtonPressed(ButtonEvent event);
  void pollTeams();
  void callStarted();
  void warnOfLowBattery();
  void note(const std::string& message);

  JabraMonitor jabra_;
  std::shared_ptr<BatteryMonitor> battery_ = BatteryMonitor::make("Jabra");
  Published<std::string> lastEvent_{objectWillChange, "Waiting for Jabra button…"};
  Published<std::optional<bool>> teamsMuted_{objectWillChange, std::nullopt};
  std::vector<Subscription> cancellables_;
  RegistrationToken pollTimer_;
  /// The poll does not read Teams before this moment, because the last read failed.
  Instant nextSearch_ = distantPast;
  Lifetime lifetime_;
};

}  // namespace hushbox
