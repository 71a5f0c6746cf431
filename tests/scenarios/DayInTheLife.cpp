#include "tests/scenarios/DayInTheLife.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <tuple>
#include <utility>

namespace hushbox {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::nanoseconds pollInterval = 1s;

bool isPressStatus(std::string_view text) {
  return text.starts_with("Mute ") || text.starts_with("Unmute ") || text.starts_with("Toggle ");
}

/// Returns what follows `prefix` in `line`, or nullopt if `line` does not start with it.
std::optional<std::string_view> after(std::string_view line, std::string_view prefix) {
  if (!line.starts_with(prefix)) return std::nullopt;
  return line.substr(prefix.size());
}

}  // namespace

DayInTheLife::DayInTheLife(std::uint64_t seed, Kind kind) : kind_(kind), random_(seed) {
  desk_.loop.shuffleTies(seed);
  desk_.locale.setTimeOfDay(9h);
  desk_.setBattery(80);
  if (kind == Kind::plain || oneIn(2)) plug();
  coordinator_ = std::make_unique<MuteCoordinator>();
  if (kind == Kind::plain) {
    desk_.teams.joinMeeting(oneIn(2));
    setInCall(true);
    if (oneIn(2)) desk_.audio.setPutsVolumeBackAfter(TimeInterval(0.05 * double(1 + draw(5))));
  }
}

void DayInTheLife::live(int steps) {
  for (int step = 0; step < steps && !testing::Test::HasFailure(); ++step) {
    nextEvent();
    pass(drawDelay());
  }
}

void DayInTheLife::nextEvent() {
  kind_ == Kind::plain ? plainEvent() : wildEvent();
}

void DayInTheLife::plainEvent() {
  oneIn(3) ? desk_.teams.setMuted(!desk_.teams.isMuted()) : press();
}

void DayInTheLife::wildEvent() {
  const std::array<std::function<void()>, 22> events = {
      [&] { press(); },
      [&] { press(); },
      [&] { press(); },
      [&] { setInCall(true); },
      [&] { setInCall(oneIn(2)); },
      [&] { desk_.teams.setMuted(oneIn(2)); },
      [&] { desk_.teams.joinMeeting(oneIn(2)); },
      [&] { desk_.teams.leaveMeeting(); },
      [&] { oneIn(3) ? desk_.teams.quit() : desk_.teams.joinMeeting(oneIn(2)); },
      [&] { oneIn(3) ? desk_.teams.freeze() : desk_.teams.thaw(); },
      [&] { desk_.accessibility.setTrusted(!oneIn(4)); },
      [&] { isPluggedIn() && oneIn(2) ? unplug() : plug(); },
      [&] { desk_.audio.plug({.name = "Microphone", .inputVolume = 0.5F}, draw(3)); },
      [&] {
        if (isPluggedIn()) desk_.audio.setInputVolume(speakerphone_, 0.1F * float(draw(10)));
      },
      [&] {
        if (isPluggedIn()) desk_.audio.announce(speakerphone_, audio::inputVolume);
      },
      [&] {
        const std::array<std::optional<TimeInterval>, 4> delays = {std::nullopt, 20ms, 250ms,
                                                                   400ms};
        desk_.audio.setPutsVolumeBackAfter(delays[draw(delays.size())]);
      },
      [&] {
        const std::array<AudioPropertyAddress, 4> addresses = {
            audio::deviceList, audio::deviceName, audio::inputVolume, audio::runningSomewhere};
        desk_.audio.addFault({.operation = static_cast<AudioOperation>(draw(7)),
                              .address = addresses[draw(addresses.size())],
                              .status = audio::hardwareNotRunning,
                              .times = 1 + static_cast<int>(draw(3))});
      },
      [&] { desk_.setBattery(static_cast<int>(draw(60)), oneIn(3) ? "charging" : "discharging"); },
      [&] { desk_.loop.setUtilityLatency(TimeInterval(double(draw(4)))); },
      [&] { desk_.locale.setTimeOfDay(TimeInterval(double(draw(86'400)))); },
      [&] {
        desk_.loop.sleep(TimeInterval(double(draw(7'200))));
        passSpan(0s);
      },
      [&] {
        desk_.teams.setPressStatus(oneIn(3) ? accessibility::cannotComplete
                                            : accessibility::success);
      },
  };
  events[draw(events.size())]();
}

TimeInterval DayInTheLife::drawDelay() {
  // Half of the delays are the program's own intervals, which make events coincide.
  const std::array<TimeInterval, 8> delays = {0s, 50ms, 300ms, 500ms, 1s, 5s, 700ms, 2s};
  if (oneIn(2)) return delays[draw(delays.size())];
  return std::chrono::milliseconds(draw(kind_ == Kind::plain ? 1'500 : 4'000));
}

void DayInTheLife::plug() {
  if (isPluggedIn()) return;
  speakerphone_ = desk_.plugSpeakerphone(oneIn(3) ? 0 : 0.7F);
}

void DayInTheLife::unplug() {
  desk_.audio.unplug(std::exchange(speakerphone_, 0));
}

void DayInTheLife::press() {
  if (!isPluggedIn()) return;
  desk_.audio.pressMuteButton(speakerphone_);
  ++devicePresses_;
}

void DayInTheLife::setInCall(bool inCall) {
  if (isPluggedIn()) desk_.audio.setRunning(speakerphone_, inCall);
}

void DayInTheLife::settle() {
  desk_.audio.clearFaults();
  desk_.accessibility.setTrusted(true);
  desk_.teams.setPressStatus(accessibility::success);
  desk_.teams.thaw();
  desk_.teams.joinMeeting(oneIn(2));
  if (kind_ == Kind::wild && isPluggedIn()) {
    // After failed reads or listeners the monitor recovers with the next device.
    unplug();
    pass(0s);
  }
  plug();
  setInCall(true);
  // Longer than the pause after a failed read and one poll interval.
  pass(7s);
  EXPECT_EQ(coordinator_->teamsMuted(), desk_.teams.isMuted());
  EXPECT_EQ(coordinator_->isMuted(), desk_.teams.isMuted());
}

void DayInTheLife::pass(TimeInterval interval) {
  const Instant end =
      desk_.loop.now() + std::chrono::duration_cast<std::chrono::nanoseconds>(interval);
  passSpan(0s);
  while (desk_.loop.now() < end) {
    const auto untilPoll = pollInterval - desk_.loop.now().time_since_epoch() % pollInterval;
    const auto span = untilPoll > 1ns ? untilPoll - 1ns : untilPoll;
    passSpan(std::min(span, end - desk_.loop.now()));
  }
}

void DayInTheLife::passSpan(TimeInterval interval) {
  const Instant start = desk_.loop.now();
  const auto announcements = ChangePublisher::announcementCount();
  const auto before = std::tuple(coordinator_->teamsMuted(), coordinator_->lastEvent(),
                                 coordinator_->jabra().isMuted(), coordinator_->jabra().isInCall(),
                                 coordinator_->battery().level());
  desk_.advance(interval);
  const auto now = std::tuple(coordinator_->teamsMuted(), coordinator_->lastEvent(),
                              coordinator_->jabra().isMuted(), coordinator_->jabra().isInCall(),
                              coordinator_->battery().level());
  if (before != now) {
    EXPECT_GT(ChangePublisher::announcementCount(), announcements);
  }
  Lines lines = desk_.journal.take();
  check(start, lines);
  std::move(lines.begin(), lines.end(), std::back_inserter(history_));
}

void DayInTheLife::check(Instant start, const Lines& lines) {
  int teamsCalls = 0;
  int pressCalls = 0;
  int writes = 0;
  int notifications = 0;
  for (const std::string& line : lines) {
    if (line.starts_with("workspace: ")) ++teamsCalls;
    if (line.starts_with("audio: set ")) ++writes;
    if (line.starts_with("notifications: add ")) ++notifications;
    if (line.starts_with("accessibility: perform ")) ++teamsPresses_;
    if (const auto label = after(line, "log: teams-ui info: Pressed Teams mic button '")) {
      EXPECT_EQ(pressedLabel_, "") << "Teams was pressed twice for one press of the device.";
      pressedLabel_ = *label;
    }
    const auto status = after(line, "log: coordinator info: ");
    if (!status) continue;
    lastStatus_ = *status;
    if (isPressStatus(*status)) {
      checkPress(*status);
      if (!status->ends_with("Hushbox")) ++pressCalls;
    } else {
      EXPECT_EQ(pressedLabel_, "") << "Teams was pressed without a press of the device.";
    }
    if (status->ends_with(" → Jabra")) --writes;
    if (status->ends_with(", notified")) --notifications;
  }
  EXPECT_EQ(writes, 0) << "The device is written exactly when it follows Teams.";
  EXPECT_EQ(notifications, 0) << "Every notification has a status line.";
  EXPECT_LE(teamsPresses_, buttonEvents_);
  if (kind_ == Kind::plain) {
    EXPECT_LE(buttonEvents_, devicePresses_);
  }
  EXPECT_TRUE(coordinator_->lastEvent().ends_with(lastStatus_)) << coordinator_->lastEvent();
  checkPoll(start, teamsCalls, pressCalls);
}

void DayInTheLife::checkPress(std::string_view status) {
  ++buttonEvents_;
  const std::string label = std::exchange(pressedLabel_, "");
  const bool pressed = status.ends_with(" → Teams");
  if (pressed) {
    EXPECT_NE(label, "");
  }
  if (!pressed && label != "") {
    EXPECT_TRUE(status.ends_with("no Teams meeting found")) << status;
  }
  // The label says what pressing does, which must be what was wanted.
  if (pressed && status.starts_with("Mute ")) {
    EXPECT_TRUE(label.starts_with("Mute ")) << label;
  }
  if (pressed && status.starts_with("Unmute ")) {
    EXPECT_TRUE(label.starts_with("Unmute ")) << label;
  }
}

void DayInTheLife::checkPoll(Instant start, int teamsCalls, int pressCalls) {
  const int polls = teamsCalls - pressCalls;
  polls_ += polls;
  // A span contains at most one poll on time and a late one.
  EXPECT_GE(polls, 0);
  EXPECT_LE(polls, 2);
  const bool known = coordinator_->teamsMuted().has_value();
  if (polls > 0 && pollFailed_) {
    EXPECT_GE(desk_.loop.now() - *pollFailed_, 5s) << "Teams was read during the pause.";
    pollFailed_.reset();
  }
  if (polls > 0 && !known) pollFailed_ = start;
}

}  // namespace hushbox
