#include "tests/scenarios/CallModel.h"

#include <algorithm>
#include <cstdio>

namespace hushbox {
namespace {

using Kind = CallEvent::Kind;

constexpr std::int64_t batteryInterval = 60'000'000'000;

/// The statuses of the simulated audio hardware and of the simulated Teams.
constexpr int refusedStatus = -50;
constexpr int missingDeviceStatus = 0x216F626A;
constexpr int failedPressStatus = -25200;

std::string decimals(float value) {
  char text[32];
  std::snprintf(text, sizeof text, "%f", static_cast<double>(value));
  return text;
}

std::string word(bool value) {
  return value ? "true" : "false";
}

}  // namespace

CallModel::CallModel(const Rules& rules, bool lastScheduledFirst)
    : rules_(rules),
      lastScheduledFirst_(lastScheduledFirst),
      restoreVolume_(rules.firstRestoreVolume) {
  schedule(0, Due::What::batteryReading);
  schedule(batteryInterval, Due::What::batteryTimer);
  schedule(rules.pollInterval, Due::What::poll);
}

void CallModel::apply(const CallEvent& event) {
  const bool on = event.amount != 0;
  switch (event.kind) {
    case Kind::pass:
      return pass(event.amount);
    case Kind::sleep:
      now_ += event.amount;
      return;
    case Kind::volume:
      if (device_) changeVolume(static_cast<float>(event.amount) / 100.0F);
      return;
    case Kind::notify:
      if (isListening()) schedule(announceDelay_, Due::What::volumeChanged);
      return;
    case Kind::use:
      if (device_) changeUse(on);
      return;
    case Kind::plug:
      if (!device_) plug(static_cast<float>(event.amount) / 100.0F);
      return;
    case Kind::unplug:
      if (device_) unplug();
      return;
    case Kind::teams:
      mutedInTeams_ = on;
      return;
    case Kind::join:
      return join(on);
    case Kind::leave:
      inMeeting_ = false;
      return;
    case Kind::quit:
      teamsRuns_ = inMeeting_ = false;
      return;
    case Kind::trust:
      trusted_ = on;
      return;
    case Kind::pressable:
      pressable_ = on;
      return;
    case Kind::pressDelay:
      pressDelay_ = event.amount;
      return;
    case Kind::readable:
      volumeReadable_ = on;
      return;
    case Kind::writable:
      volumeWritable_ = on;
      return;
    case Kind::useReadable:
      useReadable_ = on;
      return;
    case Kind::announceDelay:
      announceDelay_ = event.amount;
      return;
    case Kind::restoreDelay:
      restoreDelay_ = event.amount;
      return;
  }
}

CallState CallModel::takeState() {
  CallState state;
  state.connected = attached_.has_value();
  state.headsetMuted = headsetMuted_;
  state.inCall = inCall_;
  state.teamsMuted = teamsMuted_;
  state.muted = teamsMuted_.value_or(headsetMuted_.value_or(false));
  state.status = status_;
  state.announcements = announcements_;
  state.volume = device_ ? device_->volume : 0;
  state.mutedInTeams = mutedInTeams_;
  state.presses = presses_;
  state.records = records_;
  records_.clear();
  return state;
}

void CallModel::appendHiddenState(std::string& to) const {
  const auto append = [&to](auto value) { to += std::to_string(value) + ','; };
  append(device_ ? device_->inUse : 2);
  append(attached_.has_value());
  append(volumeReadable_ + 2 * volumeWritable_ + 4 * useReadable_ + 8 * teamsRuns_ +
         16 * inMeeting_ + 32 * trusted_ + 64 * pressable_);
  append(announceDelay_);
  append(restoreDelay_);
  append(pressDelay_);
  append(restoreVolume_);
  append(lastWrite_ ? std::min(now_ - *lastWrite_, rules_.echoWindow) : rules_.echoWindow);
  append(std::max<std::int64_t>(nextSearch_ - now_, 0));
  std::vector<Due> due = due_;
  std::sort(due.begin(), due.end(),
            [this](const Due& a, const Due& b) { return runsBefore(a, b); });
  for (const Due& one : due) {
    // It changes nothing but the number of announcements.
    if (one.what == Due::What::batteryTimer) continue;
    append(one.time - now_);
    append(static_cast<int>(one.what));
    append(one.what == Due::What::pendingMute && pendingMute_ == one.number);
    append(device_ && device_->id == one.device);
    append(one.volume);
  }
}

// The surroundings

void CallModel::pass(std::int64_t duration) {
  const std::int64_t end = now_ + duration;
  while (!due_.empty()) {
    const auto next = std::min_element(
        due_.begin(), due_.end(), [this](const Due& a, const Due& b) { return runsBefore(a, b); });
    if (next->time > end) break;
    const Due due = *next;
    due_.erase(next);
    now_ = std::max(now_, due.time);
    run(due);
  }
  now_ = std::max(now_, end);
}

bool CallModel::runsBefore(const Due& a, const Due& b) const {
  if (a.time != b.time) return a.time < b.time;
  return lastScheduledFirst_ ? a.number > b.number : a.number < b.number;
}

void CallModel::run(const Due& due) {
  switch (due.what) {
    case Due::What::deviceListChanged:
      return deviceListChanged();
    case Due::What::volumeChanged:
      return volumeChanged();
    case Due::What::useChanged:
      return useChanged();
    case Due::What::pendingMute:
      return pendingMuteIsDue(due.number);
    case Due::What::poll:
      repeat(due, rules_.pollInterval);
      return poll();
    case Due::What::batteryTimer:
      repeat(due, batteryInterval);
      schedule(0, Due::What::batteryReading);
      return;
    case Due::What::batteryReading:
      // The level and the charging state.
      announce();
      announce();
      return;
    case Due::What::volumeRestored:
      if (device_ && device_->id == due.device && device_->volume == 0) changeVolume(due.volume);
      return;
    case Due::What::labelChanged:
      mutedInTeams_ = !mutedInTeams_;
      return;
  }
}

std::uint64_t CallModel::schedule(std::int64_t delay, Due::What what, unsigned device,
                                  float volume) {
  due_.push_back({now_ + delay, nextNumber_, what, device, volume});
  return nextNumber_++;
}

/// A timer fires at multiples of its interval. It fires once, however many of them have passed.
void CallModel::repeat(const Due& fired, std::int64_t interval) {
  std::int64_t time = fired.time;
  while (time <= now_) time += interval;
  schedule(time - now_, fired.what);
}

void CallModel::changeVolume(float volume) {
  const float before = device_->volume;
  if (volume == before) return;
  device_->volume = volume;
  if (isListening()) schedule(announceDelay_, Due::What::volumeChanged);
  if (volume == 0 && restoreDelay_ >= 0) {
    schedule(restoreDelay_, Due::What::volumeRestored, device_->id, before);
  }
}

void CallModel::changeUse(bool inUse) {
  if (device_->inUse == inUse) return;
  device_->inUse = inUse;
  if (isListening()) schedule(announceDelay_, Due::What::useChanged);
}

void CallModel::plug(float volume) {
  device_ = Device{nextDevice_++, volume, false};
  schedule(announceDelay_, Due::What::deviceListChanged);
}

void CallModel::unplug() {
  device_.reset();
  schedule(announceDelay_, Due::What::deviceListChanged);
}

void CallModel::join(bool muted) {
  teamsRuns_ = inMeeting_ = true;
  mutedInTeams_ = muted;
}

bool CallModel::isListening() const {
  return device_ && attached_ == device_->id;
}

std::optional<float> CallModel::readVolume() const {
  if (!volumeReadable_ || !isListening()) return std::nullopt;
  return device_->volume;
}

bool CallModel::readUse() const {
  return useReadable_ && isListening() && device_->inUse;
}

// The headset

void CallModel::deviceListChanged() {
  if (!device_) {
    if (!attached_) return;
    attached_.reset();
    announce();  // the name
    headsetMuted_.reset();
    announce();
    inCall_ = false;
    announce();
    record("jabra: Jabra input not present");
    return;
  }
  if (attached_ == device_->id) return;
  attached_ = device_->id;
  announce();  // the name
  if (const auto volume = readVolume()) {
    headsetMuted_ = *volume == 0;
    announce();
    if (*volume > 0) restoreVolume_ = *volume;
  }
  inCall_ = readUse();
  announce();
  record("jabra: Attached to Jabra Speak2 75 (id " + std::to_string(device_->id) + ")");
}

void CallModel::volumeChanged() {
  if (!attached_) return;
  const auto volume = readVolume();
  if (!volume) return;
  if (*volume > 0) restoreVolume_ = *volume;
  const bool isEcho = lastWrite_ && now_ - *lastWrite_ < rules_.echoWindow;
  record("jabra: Jabra input volume " + decimals(*volume) + " -> muted=" + word(*volume == 0) +
         " selfInitiated=" + word(isEcho));
  if (isEcho) return;
  if (*volume == 0) {
    if (headsetMuted_ == true || pendingMute_) return;
    pendingMute_ = schedule(rules_.bounceWindow, Due::What::pendingMute);
    return;
  }
  if (pendingMute_) {
    pendingMute_.reset();
    record("jabra: Mute bounced back (volume reset by host) -> toggle press");
    buttonPressed("Toggle", std::nullopt);
    return;
  }
  if (headsetMuted_ == false) return;
  headsetMuted_ = false;
  announce();
  buttonPressed("Unmute", false);
}

void CallModel::useChanged() {
  if (!attached_) return;
  const bool inUse = readUse();
  if (inUse == inCall_) return;
  inCall_ = inUse;
  announce();
  record("jabra: Jabra mic in use -> " + word(inUse));
  if (inUse) schedule(0, Due::What::batteryReading);
}

void CallModel::pendingMuteIsDue(std::uint64_t number) {
  if (pendingMute_ != number) return;
  pendingMute_.reset();
  headsetMuted_ = true;
  announce();
  buttonPressed("Mute", true);
}

void CallModel::muteHeadset(bool muted) {
  if (!attached_ || headsetMuted_ == muted) return;
  if (muted) {
    const auto volume = readVolume();
    if (volume && *volume > 0) restoreVolume_ = *volume;
  }
  const float level = muted ? 0 : restoreVolume_;
  lastWrite_ = now_;
  headsetMuted_ = muted;
  announce();
  int status = 0;
  if (!volumeWritable_) {
    status = refusedStatus;
  } else if (!isListening()) {
    status = missingDeviceStatus;
  } else {
    changeVolume(level);
  }
  record("jabra: Set Jabra input volume to " + decimals(level) + " (status " +
         std::to_string(status) + ")");
}

// The coordinator and the poll

void CallModel::buttonPressed(const char* verb, std::optional<bool> wanted) {
  const std::string outcome = pressTeams(wanted);
  if (outcome == " → Teams") {
    if (wanted) {
      teamsMuted_ = wanted;
      announce();
    } else if (teamsMuted_) {
      teamsMuted_ = !*teamsMuted_;
      announce();
    }
  }
  note(verb + outcome);
}

std::string CallModel::pressTeams(std::optional<bool> wanted) {
  if (!trusted_) return " — grant Accessibility to Hushbox";
  if (!teamsRuns_) return " — Teams not running";
  if (!inMeeting_) return " — no Teams meeting found";
  if (wanted == mutedInTeams_) return " — Teams already in sync";
  record(std::string("teams-ui: Pressed Teams mic button '") + (mutedInTeams_ ? "Unmute" : "Mute") +
         " mic (⌘+Shift+M)' -> " + std::to_string(pressable_ ? 0 : failedPressStatus));
  if (!pressable_) return " — no Teams meeting found";
  ++presses_;
  if (pressDelay_ > 0) {
    schedule(pressDelay_, Due::What::labelChanged);
  } else {
    mutedInTeams_ = !mutedInTeams_;
  }
  return " → Teams";
}

std::optional<bool> CallModel::readTeams() const {
  if (!trusted_ || !teamsRuns_ || !inMeeting_) return std::nullopt;
  return mutedInTeams_;
}

void CallModel::poll() {
  if (!inCall_) {
    teamsMuted_.reset();
    announce();
    return;
  }
  if (now_ < nextSearch_) return;
  const auto state = readTeams();
  if (!state) {
    teamsMuted_.reset();
    announce();
    nextSearch_ = now_ + rules_.searchPause;
    return;
  }
  if (teamsMuted_ == state) return;
  teamsMuted_ = state;
  announce();
  if (headsetMuted_ == state) return;
  muteHeadset(*state);
  note(*state ? "Teams muted → Jabra" : "Teams unmuted → Jabra");
}

void CallModel::note(const std::string& message) {
  record("coordinator: " + message);
  status_ = "10:42  " + message;
  announce();
}

}  // namespace hushbox
