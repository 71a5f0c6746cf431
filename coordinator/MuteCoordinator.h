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
#include "support/Log.h"
#include "support/Published.h"
#include "support/Subscription.h"

namespace hushbox {

/// The centre of the program: turns the presses of the speakerphone's button into presses of the
/// microphone button in Teams, makes the speakerphone follow Teams during a call, warns when a call
/// starts on a low battery, and publishes what the menu and its icon show.
///
/// There is one, for the life of the process. Main thread only; it blocks there while Teams is
/// asked. Nothing in it fails: what the user should know becomes the status line.
class MuteCoordinator {
 public:
  MuteCoordinator();
  MuteCoordinator(const MuteCoordinator&) = delete;
  MuteCoordinator& operator=(const MuteCoordinator&) = delete;

  /// Announces every change of the members below and of both monitors, before it happens.
  ChangePublisher objectWillChange;

  const JabraMonitor& jabra() const { return jabra_; }
  const BatteryMonitor& battery() const { return *battery_; }

  /// The status line: what happened last, behind the time of day.
  const std::string& lastEvent() const { return lastEvent_.get(); }

  /// Teams' mute state as last known; empty when unknown or no call is up.
  std::optional<bool> teamsMuted() const { return teamsMuted_.get(); }

  /// The answer to "am I muted?": Teams' state when known, else the headset's, else false.
  bool isMuted() const;

  /// The mask in its present state: red or green during a call, else a template.
  Image menuBarIcon() const;

 private:
  void jabraButtonPressed(ButtonEvent event);
  void pollTeams();
  void callStarted();
  void warnOfLowBattery();
  void note(const std::string& message);

  JabraMonitor jabra_;
  std::shared_ptr<BatteryMonitor> battery_ = BatteryMonitor::make("Jabra");
  Published<std::string> lastEvent_{objectWillChange, "Waiting for Jabra button…"};
  Published<std::optional<bool>> teamsMuted_{objectWillChange, std::nullopt};
  Log log_{"coordinator"};
  std::vector<Subscription> cancellables_;
  RegistrationToken pollTimer_;
  /// Until then Teams is left alone, because it could not be read.
  Instant nextSearch_ = distantPast;
  Lifetime lifetime_;
};

}  // namespace hushbox
