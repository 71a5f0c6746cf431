#include "tests/scenarios/CallComparison.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

#include "coordinator/MuteCoordinator.h"
#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {
namespace {

using Kind = CallEvent::Kind;
using std::chrono::nanoseconds;

/// The program on a simulated desk.
class ProgramOnDesk {
 public:
  ProgramOnDesk() {
    desk_.journal.keepLines(false);
    coordinator_ = std::make_unique<MuteCoordinator>();
    subscription_ = coordinator_->objectWillChange.subscribe([this] { ++announcements_; });
  }

  void apply(const CallEvent& event) {
    const bool on = event.amount != 0;
    const nanoseconds time{event.amount};
    switch (event.kind) {
      case Kind::pass:
        return desk_.advance(time);
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

  CallState takeState() {
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
    for (; recordsSeen_ < desk_.log.records().size(); ++recordsSeen_) {
      const LogRecord& record = desk_.log.records()[recordsSeen_];
      // The model has no notifications.
      if (record.category != "notify")
        state.records.push_back(record.category + ": " + record.text);
    }
    return state;
  }

 private:
  static float volumeOf(const CallEvent& event) {
    return static_cast<float>(event.amount) / 100.0F;
  }

  void applyToDevice(const CallEvent& event) {
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

  void allow(bool& operation, bool allowed) {
    operation = allowed;
    desk_.audio.clearFaults();
    if (!isReadable_) desk_.audio.addFault({.status = audio::hardwareNotRunning});
    if (!isWritable_) {
      desk_.audio.addFault({.operation = AudioOperation::setPropertyData, .status = -50});
    }
    if (!isUseReadable_) {
      desk_.audio.addFault(
          {.address = audio::runningSomewhere, .status = audio::hardwareNotRunning});
    }
  }

  SimulatedDesk desk_;
  /// 0 without a device.
  AudioObjectID device_ = 0;
  bool isReadable_ = true;
  bool isWritable_ = true;
  bool isUseReadable_ = true;
  std::size_t announcements_ = 0;
  std::size_t recordsSeen_ = 0;
  std::unique_ptr<MuteCoordinator> coordinator_;
  Subscription subscription_;
};

/// Removes runs of `length` events wherever `fails` stays true.
void removeRuns(CallHistory& history, std::size_t length,
                const std::function<bool(const CallHistory&)>& fails) {
  for (std::size_t at = 0; at < history.size();) {
    CallHistory shorter = history;
    const auto first = shorter.begin() + static_cast<std::ptrdiff_t>(at);
    const auto count = std::min(length, shorter.size() - at);
    shorter.erase(first, first + static_cast<std::ptrdiff_t>(count));
    if (fails(shorter)) {
      history = std::move(shorter);
    } else {
      at += length;
    }
  }
}

/// Joins each two `pass` events in a row wherever `fails` stays true.
void joinPasses(CallHistory& history, const std::function<bool(const CallHistory&)>& fails) {
  for (std::size_t at = 0; at + 1 < history.size();) {
    CallHistory joined = history;
    joined[at].amount += joined[at + 1].amount;
    joined.erase(joined.begin() + static_cast<std::ptrdiff_t>(at) + 1);
    const bool arePasses = history[at].kind == Kind::pass && history[at + 1].kind == Kind::pass;
    if (arePasses && fails(joined)) {
      history = std::move(joined);
    } else {
      ++at;
    }
  }
}

}  // namespace

std::optional<CallDifference> compareWithModel(const CallHistory& history,
                                               const CallModel::Rules& rules) {
  ProgramOnDesk program;
  CallModel model(rules);
  for (std::size_t i = 0; i < history.size(); ++i) {
    program.apply(history[i]);
    model.apply(history[i]);
    const CallState expected = model.takeState();
    const CallState actual = program.takeState();
    if (!(expected == actual)) return CallDifference{i, differences(expected, actual)};
  }
  return std::nullopt;
}

CallHistory shrink(CallHistory history, const std::function<bool(const CallHistory&)>& fails) {
  for (std::size_t length = std::max<std::size_t>(history.size() / 2, 1); length > 0; length /= 2) {
    removeRuns(history, length, fails);
  }
  for (CallEvent& event : history) {
    const std::int64_t amount = std::exchange(event.amount, 0);
    if (!fails(history)) event.amount = amount;
  }
  joinPasses(history, fails);
  removeRuns(history, 1, fails);
  return history;
}

}  // namespace hushbox
