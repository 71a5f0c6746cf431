#include "tests/scenarios/ProgramOnDesk.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

#include "tests/scenarios/HiddenState.h"

namespace hushbox {
namespace {

using Kind = CallEvent::Kind;
using std::chrono::nanoseconds;

float volumeOf(const CallEvent& event) {
  return static_cast<float>(event.amount) / 100.0F;
}

}  // namespace

ProgramOnDesk::ProgramOnDesk(Ties ties) {
  desk_.journal.keepLines(false);
  if (ties == Ties::lastScheduledFirst) desk_.loop.reverseTies();
  coordinator_ = std::make_unique<MuteCoordinator>();
  subscription_ = coordinator_->objectWillChange.subscribe([this] { ++announcements_; });
}

void ProgramOnDesk::apply(const CallEvent& event) {
  const bool on = event.amount != 0;
  const nanoseconds time{event.amount};
  switch (event.kind) {
    case Kind::pass:
      return pass(time);
    case Kind::sleep:
      return desk_.loop.sleep(time);
    case Kind::teams:
      return desk_.teams.setMuted(on);
    case Kind::join:
      return desk_.teams.joinMeeting(on);
    case Kind::leave:
      return desk_.teams.leaveMeeting();
    case Kind::quit:
      return desk_.teams.quit();
    case Kind::trust:
      return desk_.accessibility.setTrusted(on);
    case Kind::pressable:
      return desk_.teams.setPressStatus(on ? accessibility::success : accessibility::failure);
    case Kind::pressDelay:
      return desk_.teams.setPressLatency(on ? std::optional<TimeInterval>(time) : std::nullopt);
    case Kind::readable:
      return allow(isReadable_, on);
    case Kind::writable:
      return allow(isWritable_, on);
    case Kind::useReadable:
      return allow(isUseReadable_, on);
    case Kind::announceDelay:
      return desk_.audio.setAnnouncementDelay(time);
    case Kind::restoreDelay:
      return desk_.audio.setPutsVolumeBackAfter(
          event.amount < 0 ? std::nullopt : std::optional<TimeInterval>(time));
    case Kind::plug:
      if (!device_) device_ = desk_.plugSpeakerphone(volumeOf(event));
      return;
    case Kind::volume:
    case Kind::notify:
    case Kind::use:
    case Kind::unplug:
      if (device_) applyToDevice(event);
      return;
  }
}

void ProgramOnDesk::pass(nanoseconds time) {
  if (!turnListener_) return desk_.advance(time);
  const Instant end = desk_.loop.now() + time;
  bool turned = true;
  while (turned) {
    bool first = true;
    turned = desk_.loop.advanceUntil([&first] { return !std::exchange(first, false); },
                                     end - desk_.loop.now());
    std::vector<std::string> records;
    takeRecords(records);
    if (turned) turnListener_(desk_.loop.now().time_since_epoch(), records);
    std::move(records.begin(), records.end(), std::back_inserter(records_));
  }
}

CallState ProgramOnDesk::takeState() {
  CallState state;
  state.connected = coordinator_->jabra().deviceName().has_value();
  state.headsetMuted = coordinator_->jabra().isMuted();
  state.inCall = coordinator_->jabra().isInCall();
  state.teamsMuted = coordinator_->teamsMuted();
  state.muted = coordinator_->isMuted();
  state.status = coordinator_->lastEvent();
  state.announcements = announcements_;
  state.volume = desk_.audio.inputVolume(device_);
  state.mutedInTeams = desk_.teams.isMuted();
  state.presses = desk_.teams.pressCount();
  takeRecords(records_);
  state.records = std::exchange(records_, {});
  return state;
}

void ProgramOnDesk::takeRecords(std::vector<std::string>& to) {
  for (; recordsSeen_ < desk_.log.records().size(); ++recordsSeen_) {
    const LogRecord& record = desk_.log.records()[recordsSeen_];
    // The model has no notifications.
    if (record.category != "notify") to.push_back(record.category + ": " + record.text);
  }
}

void ProgramOnDesk::applyToDevice(const CallEvent& event) {
  switch (event.kind) {
    case Kind::volume:
      return desk_.audio.setInputVolume(device_, volumeOf(event));
    case Kind::notify:
      return desk_.audio.announce(device_, audio::inputVolume);
    case Kind::use:
      return desk_.audio.setRunning(device_, event.amount != 0);
    default:
      return desk_.audio.unplug(std::exchange(device_, 0));
  }
}

void ProgramOnDesk::allow(bool& operation, bool allowed) {
  operation = allowed;
  desk_.audio.clearFaults();
  if (!isReadable_) desk_.audio.addFault({.status = audio::hardwareNotRunning});
  if (!isWritable_) {
    desk_.audio.addFault({.operation = AudioOperation::setPropertyData, .status = -50});
  }
  if (!isUseReadable_) {
    desk_.audio.addFault({.address = audio::runningSomewhere, .status = audio::hardwareNotRunning});
  }
}

void ProgramOnDesk::appendHiddenState(std::string& to) const {
  const Instant now = desk_.loop.now();
  HiddenState::append(*coordinator_, now, to);
  // Whether the attached device is the one that is plugged in.
  to += device_ == HiddenState::deviceOf(*coordinator_) ? 'a' : 'd';
  to += isReadable_ ? 'r' : '-';
  to += isWritable_ ? 'w' : '-';
  to += isUseReadable_ ? 'u' : '-';
  // The cached button is one more reference to it.
  to += static_cast<char>('0' + desk_.teams.microphone().use_count());
  for (const std::chrono::nanoseconds delay : desk_.loop.pendingDelays()) {
    // The battery's timer changes nothing but the number of announcements.
    if (delay <= std::chrono::seconds(2)) to += std::to_string(delay.count()) + ',';
  }
}

}  // namespace hushbox
