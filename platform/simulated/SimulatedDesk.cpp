#include "platform/simulated/SimulatedDesk.h"

#include <utility>

#include "platform/simulated/Violation.h"
#include "support/ChangePublisher.h"

namespace hushbox {
namespace {

constexpr const char* powerManagementTool = "/usr/bin/pmset";

}  // namespace

SimulatedDesk::SimulatedDesk() : subscribersAtOpening_(ChangePublisher::subscriberCount()) {
  setBatteryReport("Now drawing from 'AC Power'\n");
  scope_.emplace(Platform{loop, audio, accessibility, workspace, childProcesses, notifications,
                          loginItem, menuBar, log, locale});
}

SimulatedDesk::~SimulatedDesk() {
  close();
}

AudioObjectID SimulatedDesk::plugSpeakerphone(float volume) {
  return audio.plug({.name = speakerphoneName, .inputVolume = volume});
}

void SimulatedDesk::setBattery(int level, const std::string& state) {
  setBatteryReport("Now drawing from 'AC Power'\n -" + std::string(speakerphoneName) +
                   " (id=1234)\t" + std::to_string(level) + "%; " + state +
                   "; (no estimate) present: true\n");
}

void SimulatedDesk::setBatteryReport(std::string report) {
  childProcesses.install(powerManagementTool, std::move(report));
}

void SimulatedDesk::close() {
  if (!scope_) return;
  checkThatNothingHappens();
  scope_.reset();
}

void SimulatedDesk::checkThatNothingHappens() {
  const auto expectUnchanged = [](std::size_t before, std::size_t after, const std::string& what) {
    if (after == before) return;
    reportViolation("After everything was let go of there was " + what + ": " +
                    std::to_string(before) + " before, " + std::to_string(after) + " now.");
  };

  const std::size_t announcements = ChangePublisher::announcementCount();
  while (loop.releaseUtilityBlock()) {
  }

  const std::size_t callsButLogging = journal.callCount() - journal.callCount("log");
  notifications.answerWaiting();
  expectUnchanged(callsButLogging, journal.callCount() - journal.callCount("log"),
                  "a call to the platform from a completion");

  const std::size_t calls = journal.callCount();
  audio.fireListenersOnce();
  loop.fireEverythingOnce();
  expectUnchanged(calls, journal.callCount(), "a call to the platform");

  expectUnchanged(announcements, ChangePublisher::announcementCount(), "an announcement");
  expectUnchanged(subscribersAtOpening_, ChangePublisher::subscriberCount(), "a subscriber");
}

}  // namespace hushbox
