#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "headset/JabraMonitor.h"
#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {

/// A monitor on the simulated desk. What it tells its surroundings is journaled among the
/// platform's calls, as part "monitor": "will change", "button muted", "call started".
class JabraMonitorFixture : public testing::Test {
 protected:
  /// Makes the monitor and connects to it.
  void start() {
    monitor = std::make_unique<JabraMonitor>();
    subscription = monitor->objectWillChange.subscribe([this] { hear("will change"); });
    monitor->onButton = [this](ButtonEvent event) { hear("button " + nameOf(event)); };
    monitor->onCallStarted = [this] { hear("call started"); };
  }

  /// The same with the speakerphone plugged in at that volume, and forgets how it came about.
  void startWithSpeakerphone(float volume = 0.8F) {
    speakerphone = desk.plugSpeakerphone(volume);
    start();
    desk.journal.take();
  }

  /// The same with a volume that could not be read, so that the mute state is unknown.
  void startWithUnknownState(float volume = 0.8F) {
    desk.audio.addFault({.status = audio::hardwareNotRunning, .times = 1});
    startWithSpeakerphone(volume);
  }

  /// Plugs in any other device.
  AudioObjectID plug(const std::string& name, std::optional<float> volume = 0.5F) {
    return desk.audio.plug({.name = name, .inputVolume = volume});
  }

  void release() {
    subscription = {};
    monitor.reset();
  }

  /// The device's volume changes, and the listeners hear of it.
  void setVolume(float volume) {
    desk.audio.setInputVolume(speakerphone, volume);
    desk.loop.runUntilIdle();
  }

  /// The listeners are told of a change of the volume although there was none.
  void announceVolume() {
    desk.audio.announce(speakerphone, audio::inputVolume);
    desk.loop.runUntilIdle();
  }

  void hear(const std::string& what) { desk.journal.add("monitor", what); }

  /// What was heard since it was asked last, announcements left out.
  Lines takeEvents() {
    Lines events = desk.journal.take("monitor");
    std::erase(events, "will change");
    return events;
  }

  /// The text of the last log record; empty when there is none.
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
