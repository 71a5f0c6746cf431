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

/// Finds the speakerphone among the audio devices, follows it as it comes and goes, and turns what
/// its mute button does to its input volume into button events.
///
/// The device gives the computer no button events of its own: a press drives its input volume to
/// zero, the next one brings it back, and some calling hosts put the volume straight back when they
/// see it drop. A drop therefore waits out the bounce window before it counts as a mute.
///
/// Main thread only. Listeners, timers and work items hold the monitor weakly and are left in place
/// when it goes.
class JabraMonitor {
 public:
  /// Starts watching the device list, and attaches to the speakerphone at once if it is there.
  JabraMonitor();
  JabraMonitor(const JabraMonitor&) = delete;
  JabraMonitor& operator=(const JabraMonitor&) = delete;

  /// Announces each change of the three members below before it happens.
  ChangePublisher objectWillChange;

  /// Name of the attached device; empty when there is none.
  const std::optional<std::string>& deviceName() const { return deviceName_.get(); }

  /// Whether the device is believed muted; empty while that is unknown.
  std::optional<bool> isMuted() const { return isMuted_.get(); }

  /// Whether some process is using the device: a call is up.
  bool isInCall() const { return isInCall_.get(); }

  /// Called on each press of the mute button. May be empty.
  std::function<void(ButtonEvent)> onButton;

  /// Called when the device goes from not in use to in use. May be empty.
  std::function<void()> onCallStarted;

  /// Mutes or unmutes the device so that it follows Teams; raises no button event. Does nothing
  /// without a device, or when the device is known to be in that state. A refused write shows in
  /// the log only, and the belief stays as asked for.
  void setMuted(bool muted);

 private:
  void attach();
  void detach();
  std::optional<AudioObjectID> findJabraInput() const;
  /// The device's name; empty when it cannot be read.
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
  /// The last input volume above zero: what unmuting writes back.
  float restoreVolume_ = 0.6F;
  /// A mute that is waiting out the bounce window. It ends by running or by bouncing back, not by
  /// the device going away.
  std::optional<WorkItem> pendingMute_;
  Lifetime lifetime_;
};

}  // namespace hushbox
