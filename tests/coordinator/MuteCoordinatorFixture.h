#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "coordinator/MuteCoordinator.h"
#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {

/// A coordinator on the simulated desk, created at 0 s: it polls at 1 s, 2 s, ... Its announcements
/// are in the journal, among the platform's calls, as "coordinator: will change".
class MuteCoordinatorFixture : public testing::Test {
 protected:
  void start() {
    coordinator = std::make_unique<MuteCoordinator>();
    subscription = coordinator->objectWillChange.subscribe(
        [this] { desk.journal.add("coordinator", "will change"); });
  }

  /// Does the same with the speakerphone plugged in, and clears the journal.
  void startWithSpeakerphone(float volume = 0.8F) {
    speakerphone = desk.plugSpeakerphone(volume);
    start();
    desk.loop.runUntilIdle();
    desk.journal.take();
  }

  /// Starts a call with a Teams meeting, before the first poll.
  void startCall(float volume, bool teamsMuted) {
    startWithSpeakerphone(volume);
    desk.teams.joinMeeting(teamsMuted);
    setInCall(true);
    desk.journal.take();
  }

  void release() {
    subscription = {};
    coordinator.reset();
  }

  void setInCall(bool inCall) {
    desk.audio.setRunning(speakerphone, inCall);
    desk.loop.runUntilIdle();
  }

  void setVolume(float volume) {
    desk.audio.setInputVolume(speakerphone, volume);
    desk.loop.runUntilIdle();
  }

  /// Changes the volume as a press with that meaning does, and waits out the bounce window.
  void press(ButtonEvent event) {
    if (event == ButtonEvent::unmuted) {
      setVolume(0.8F);
      return;
    }
    setVolume(0);
    if (event == ButtonEvent::toggled) setVolume(0.8F);
    desk.advance(std::chrono::milliseconds{300});
  }

  /// A press while Teams' button cannot be pressed, neither now nor later.
  void muteOnlyTheHeadset() {
    desk.teams.setPressStatus(accessibility::failure);
    press(ButtonEvent::muted);
  }

  std::size_t takeAnnouncements() { return desk.journal.take("coordinator").size(); }

  /// How often Teams was looked for since the last call.
  std::size_t takeTeamsCalls() { return desk.journal.take("workspace").size(); }

  TimeInterval now() const { return desk.loop.now().time_since_epoch(); }

  SimulatedDesk desk;
  AudioObjectID speakerphone = 0;
  std::unique_ptr<MuteCoordinator> coordinator;
  Subscription subscription;
};

}  // namespace hushbox
