#include "platform/simulated/SimulatedDesk.h"

#include <utility>

#include "platform/simulated/Violation.h"
#include "support/ChangePublisher.h"

namespace hushbox {
namespace {

constexpr const char* powerManagementTool = "/usr/bin/pmset";

void expectUnchanged(std::size_t before, std::size_t after, const std::string& what) {
  if (after == before) return;
  reportViolation("After everything was destroyed there was " + what + ": " +
                  std::to_string(before) + " before, " + std::to_string(after) + " now.");
}

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

void SimulatedDesk::makeNameReadableOnce() {
  AudioFault fault{.operation = AudioOperation::getPropertyText, .address = audio::deviceName};
  fault.times = 1;
  audio.addFault(fault);
  fault.times = std::nullopt;
  fault.status = audio::badObject;
  audio.addFault(fault);
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
  const std::size_t announcements = ChangePublisher::announcementCount();
  while (loop.releaseUtilityBlock()) {
  }
  expectNoCalls("from a completion", "log", [this] { notifications.answerWaiting(); });
  expectNoCalls("from a menu", "loop", [this] {
    menuBar.chooseEveryRow();
    menuBar.drawing();
  });
  expectNoCalls("from a listener", "", [this] { audio.fireListenersOnce(); });
  expectNoCalls("from the main loop", "", [this] { loop.fireEverythingOnce(); });
  expectUnchanged(announcements, ChangePublisher::announcementCount(), "an announcement");
  expectUnchanged(subscribersAtOpening_, ChangePublisher::subscriberCount(), "a subscriber");
}

void SimulatedDesk::expectNoCalls(const std::string& source, std::string_view exempt,
                                  const std::function<void()>& action) {
  const auto count = [&] { return journal.callCount() - journal.callCount(exempt); };
  const std::size_t before = count();
  const std::size_t linesBefore = journal.lines().size();
  action();
  const Lines lines = journal.lines();
  const std::string last =
      lines.size() > linesBefore ? " (the last one was " + lines.back() + ")" : "";
  expectUnchanged(before, count(), "a call to the platform " + source + last);
}

}  // namespace hushbox
