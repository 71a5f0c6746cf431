#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "coordinator/MuteCoordinator.h"
#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {

/// A call on the simulated desk in which the speakerphone's button can be pressed repeatedly.
class PressCycle {
 public:
  PressCycle() {
    desk_.journal.keepLines(false);
    desk_.teams.joinMeeting();
    device_ = desk_.plugSpeakerphone();
    coordinator_.emplace();
    desk_.audio.setRunning(device_, true);
    desk_.advance(TimeInterval{1.5});
  }

  /// Mutes and unmutes, each with all its effects: two presses of Teams' button.
  void run() {
    desk_.audio.setInputVolume(device_, 0.0F);
    desk_.advance(TimeInterval{0.5});
    desk_.audio.setInputVolume(device_, 0.8F);
    desk_.advance(TimeInterval{0.5});
  }

  /// Plugs in other microphones, before the speakerphone in the list of devices.
  void plugOthers(std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
      desk_.audio.plug({.name = "Microphone " + std::to_string(i), .inputVolume = 0.5F}, 0);
    desk_.advance(TimeInterval{0});
  }

  /// The list of devices changes, as when one is plugged in.
  void changeDeviceList() {
    desk_.audio.announce(audio::systemObject, audio::deviceList);
    desk_.advance(TimeInterval{0});
  }

  /// Two changes of the volume that mean no press, as when its user turns it down and up again.
  void moveVolume() {
    desk_.audio.setInputVolume(device_, 0.7F);
    desk_.advance(TimeInterval{0});
    desk_.audio.setInputVolume(device_, 0.8F);
    desk_.advance(TimeInterval{0});
  }

  /// Advances one second of the call in which nothing happens but one poll.
  void idleSecond() { desk_.advance(TimeInterval{1.0}); }

 private:
  SimulatedDesk desk_;
  AudioObjectID device_ = 0;
  std::optional<MuteCoordinator> coordinator_;
};

}  // namespace hushbox
