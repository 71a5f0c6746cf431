#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "headset/JabraMonitor.h"
#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {

/// A monitor on the simulated desk. Its announcements and callbacks are in the journal, among the
/// platform's calls, as part "monitor": "will change", "button muted", "call started".
class JabraMonitorFixture : public testing::Test {
 protected:
  /// Creates the monitor and subscribes to it.
  void start() {
    monitor = std::make_unique<JabraMonitor>();
    subscription = monitor->objectWillChange.subscribe([this] { hear("will change"); });
    monitor->onButton = [this](ButtonEvent event) { hear("button " + nameOf(event)); };
    monitor->onCallStarted = [this] { hear("call started"); };
  }

  /// Does the same with the speakerphone plugged in at that volume, and clears the journal.
  void startWithSpeakerphone(float volume = 0.8F) {
    speakerphone = desk.plugSpeakerphone(volume);
    start();
    desk.journal.take();
  }

  /// Does the same with an unreadable volume, so that the mute state is unknown.
  void startWithUnknownState(float volume = 0.8F) {
    desk.audio.addFault({.status = audio::hardwareNotRunning, .times = 1});
    startWithSpeakerphone(volume);
  }

  /// Plugs in another device.
  AudioObjectID plug(const std::string& name, std::optional<float> volume = 0.5F) {
    return desk.audio.plug({.name = name, .inputVolume = volume});
  }

  void release() {
    subscription = {};
    monitor.reset();
  }

  /// Changes the device's volume and calls the listeners.
  void setVolume(float volume) {
    desk.audio.setInputVolume(speakerphone, volume);
    desk.loop.runUntilIdle();
  }

  /// Does the same before it returns, even when called from a callback of the monitor.
  void setVolumeAtOnce(float volume) {
    desk.audio.setInputVolume(speakerphone, volume);
    desk.audio.fireListenersOnce();
  }

  /// Calls the volume's listeners without a change.
  void announceVolume() {
    desk.audio.announce(speakerphone, audio::inputVolume);
    desk.loop.runUntilIdle();
  }

  void hear(const std::string& what) { desk.journal.add("monitor", what); }

  /// Takes the callbacks from the journal, and drops the announcements.
  Lines takeEvents() {
    Lines events = desk.journal.take("monitor");
    std::erase(events, "will change");
    return events;
  }

  /// The text of the last log record; empty if there is none.
  std::string lastRecord() const {
    return desk.log.records().empty() ? "" : desk.log.records().back().text;
  }

  static std::string nameOf(ButtonEvent event) {
    switch (event) {
      case ButtonEvent::muted:
        return "muted";
      case ButtonEvent::unmuted:
        return "unmuted";
      case ButtonEvent::toggled:
        break;
    }
    return "toggled";
  }

  SimulatedDesk desk;
  AudioObjectID speakerphone = 0;
  std::unique_ptr<JabraMonitor> monitor;
  Subscription subscription;
};

}  // namespace hushbox
