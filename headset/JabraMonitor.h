#pragma once

#include <functional>
#include <optional>
#include <string>

#include "headset/ButtonEvent.h"
#include "platform/AudioHardware.h"
#include "platform/Time.h"
#include "platform/WorkItem.h"
#include "support/ChangePublisher.h"
#include "support/Lifetime.h"
#include "support/Published.h"

namespace hushbox {

/// Finds the speakerphone among the audio devices, follows it as it is unplugged and plugged in,
/// and infers presses of its mute button from changes of its input volume.
///
/// The device reports no button events to the computer. A press sets its input volume to zero and
/// the next press restores it. Some calling programs restore the volume themselves as soon as it
/// drops. A drop therefore counts as a mute only after the bounce window of 0.3 seconds.
///
/// Main thread only. Listeners and work items hold the monitor weakly and stay in place when it is
/// destroyed.
class JabraMonitor {
 public:
  /// Starts watching the device list and attaches to the speakerphone at once if it is present.
  JabraMonitor();
  JabraMonitor(const JabraMonitor&) = delete;
  JabraMonitor& operator=(const JabraMonitor&) = delete;

  /// Announces each assignment of the three members below before it happens.
  ChangePublisher objectWillChange;

  /// The name of the attached device; absent without a device.
  const std::optional<std::string>& deviceName() const { return deviceName_.get(); }

  /// Whether the device is believed to be muted; empty while that is unknown.
  std::optional<bool> isMuted() const { return isMuted_.get(); }

  /// Whether a process is using the device's input, which is taken for a call.
  bool isInCall() const { return isInCall_.get(); }

  /// Called for each press of the mute button, after `isMuted` has changed. May be empty.
  std::function<void(ButtonEvent)> onButton;

  /// Called when a process starts using the device, but not if one already does when the device is
  /// attached. May be empty.
  std::function<void()> onCallStarted;

  /// Mutes or unmutes the device by writing its input volume; never calls `onButton`. Does nothing
  /// without a device or if the device is known to be in that state. A failed write is only logged;
  /// `isMuted` keeps the requested state.
  void setMuted(bool muted);

 private:
  /// Of the search in tests/scenarios.
  friend struct HiddenState;

  void attach();
  void detach();
  std::optional<AudioObjectID> findJabraInput() const;
  /// Returns the device's name, or the empty string if it cannot be read.
  std::string name(AudioObjectID device) const;
  std::optional<float> inputVolume() const;
  bool isRunning() const;
  void volumeChanged();
  void droppedToZero();
  void cameBack();
  void runningChanged();
  void raise(ButtonEvent event) const;

  Published<std::optional<std::string>> deviceName_{objectWillChange, std::nullopt};
  Published<std::optional<bool>> isMuted_{objectWillChange, std::nullopt};
  Published<bool> isInCall_{objectWillChange, false};
  std::optional<AudioObjectID> deviceID_;
  RegistrationToken deviceListListener_;
  RegistrationToken volumeListener_;
  RegistrationToken runningListener_;
  /// When we last wrote the device's volume.
  Instant lastSelfChange_ = distantPast;
  /// The last input volume seen above zero, 0 to 1; unmuting writes it back.
  float restoreVolume_ = 0.6F;
  /// The mute that waits for the end of the bounce window. It ends by running or when the volume
  /// rises; unplugging the device does not cancel it.
  std::optional<WorkItem> pendingMute_;
  Lifetime lifetime_;
};

}  // namespace hushbox
