#include "tests/scenarios/WholeDay.h"

#include <array>
#include <chrono>
#include <utility>

#ifdef __GLIBC__
#include <malloc.h>
#if __GLIBC_PREREQ(2, 33)
#define HUSHBOX_HAS_MALLINFO2
#endif
#endif

namespace hushbox {
namespace {

using namespace std::chrono_literals;

constexpr int hours = 24;

/// What the heap may grow by in a day. Caches of the simulated desk reach their size in the first
/// hour.
constexpr std::ptrdiff_t maxHeapGrowth = 64 * 1024;

/// The coordinator's poll and the battery's.
constexpr std::size_t timerCount = 2;

/// Returns how many bytes of the heap are in use.
std::ptrdiff_t heapInUse() {
#ifdef HUSHBOX_HAS_MALLINFO2
  return static_cast<std::ptrdiff_t>(mallinfo2().uordblks);
#else
  return 0;
#endif
}

}  // namespace

WholeDay::WholeDay(std::uint64_t seed) : random_(seed) {
  desk_.journal.keepLines(false);
  desk_.loop.shuffleTies(seed);
  desk_.locale.setTimeOfDay(0h);
  desk_.setBattery(80);
  coordinator_ = std::make_unique<MuteCoordinator>();
}

std::optional<std::string> WholeDay::live() {
  for (int hour = 1; hour <= hours && !failure_; ++hour) {
    const Instant end = Instant(std::chrono::hours(hour)) - 60s;
    while (desk_.loop.now() < end && !failure_) {
      nextEvent();
      // Bursts of events, and quiet minutes.
      const std::array<TimeInterval, 6> delays = {0s, 100ms, 300ms, 500ms, 1s, 5s};
      pass(oneIn(12) ? TimeInterval(double(draw(600))) : delays[draw(delays.size())]);
    }
    settle();
    checkHeap(hour);
  }
  if (!failure_ && heapGrowth() > maxHeapGrowth) {
    fail("the heap grew by " + std::to_string(heapGrowth()) + " bytes");
  }
  coordinator_ = nullptr;
  // Reports a violation if a timer or a listener still does something.
  desk_.close();
  return failure_;
}

void WholeDay::nextEvent() {
  ++events_;
  switch (draw(16)) {
    case 0:
    case 1:
    case 2:
    case 3:
      return press();
    case 4:
      return isPluggedIn() && oneIn(2) ? unplug() : plug();
    case 5:
    case 6:
      if (isPluggedIn()) desk_.audio.setRunning(speakerphone_, !oneIn(3));
      return;
    case 7: {
      const std::array<std::optional<TimeInterval>, 5> delays = {std::nullopt, std::nullopt, 20ms,
                                                                 250ms, 400ms};
      return desk_.audio.setPutsVolumeBackAfter(delays[draw(delays.size())]);
    }
    case 8:
      if (isPluggedIn()) {
        desk_.audio.setInputVolume(speakerphone_, 0.1F * static_cast<float>(draw(11)));
      }
      return;
    case 9:
    case 10:
    case 11:
    case 12:
      return drawTeamsEvent();
    case 13:
      return drawPowerTool();
    case 14:
      return desk_.locale.setTimeOfDay(TimeInterval(double(draw(86'400))));
    default:
      if (!oneIn(4)) return;
      desk_.loop.sleep(TimeInterval(double(draw(1'800))));
      invariants_.machineSlept(desk_.loop.now().time_since_epoch());
  }
}

void WholeDay::drawTeamsEvent() {
  switch (draw(7)) {
    case 0:
      return desk_.teams.setMuted(oneIn(2));
    case 1:
      return growTree();
    case 2:
      return desk_.teams.joinMeeting(oneIn(2));
    case 3:
      return desk_.teams.leaveMeeting();
    case 4:
      if (!oneIn(3)) return;
      grown_.clear();
      desk_.teams.quit();
      if (oneIn(2)) desk_.teams.launch();
      return;
    case 5:
      return desk_.teams.setPressStatus(oneIn(3) ? accessibility::failure : accessibility::success);
    default:
      return desk_.accessibility.setTrusted(!oneIn(4));
  }
}

void WholeDay::drawPowerTool() {
  // Up to ten minutes: several readings then wait for it at once.
  desk_.loop.setUtilityLatency(oneIn(3) ? TimeInterval(double(draw(600))) : 0s);
  if (oneIn(4)) return desk_.setBatteryReport(std::string(draw(100'000), 'x'));
  desk_.setBattery(static_cast<int>(draw(101)), oneIn(3) ? "charging" : "discharging");
}

void WholeDay::growTree() {
  const SimulatedElementRef& application = desk_.teams.application();
  if (!application) return;
  if (grown_.size() > 100) shrinkTree();
  for (std::uint64_t i = draw(20); i > 0; --i) {
    grown_.push_back(application->append(
        "participant", {{"AXRole", std::string("AXButton")},
                        {"AXTitle", std::string(oneIn(2) ? "Mute participant" : "Pin")}}));
  }
}

void WholeDay::shrinkTree() {
  for (const SimulatedElementRef& element : std::exchange(grown_, {})) {
    desk_.teams.application()->removeChild(element);
  }
}

void WholeDay::press() {
  if (!isPluggedIn()) return;
  ++presses_;
  desk_.audio.pressMuteButton(speakerphone_);
}

void WholeDay::plug() {
  if (!isPluggedIn()) speakerphone_ = desk_.plugSpeakerphone(oneIn(3) ? 0 : 0.7F);
}

void WholeDay::unplug() {
  desk_.audio.unplug(std::exchange(speakerphone_, 0));
}

void WholeDay::settle() {
  desk_.setBattery(80);
  shrinkTree();
  desk_.loop.setUtilityLatency(0s);
  desk_.audio.setPutsVolumeBackAfter(std::nullopt);
  desk_.accessibility.setTrusted(true);
  desk_.teams.setPressStatus(accessibility::success);
  if (isPluggedIn()) unplug();
  pass(1s);
  plug();
  desk_.teams.joinMeeting(oneIn(2));
  pass(0s);
  desk_.audio.setRunning(speakerphone_, true);
  // Longer than the pause after a failed read, and than the echo of the headset following Teams.
  pass(8s);
  if (coordinator_->teamsMuted() != desk_.teams.isMuted()) fail("Teams' state is not known");
  checkPress();
  checkPress();
  desk_.audio.setRunning(speakerphone_, false);
  // A reading that was waiting for a hanging tool may take up to ten minutes more.
  pass(11min);
  desk_.notifications.clearRequests();
  checkNothingPending();
}

void WholeDay::checkPress() {
  desk_.audio.pressMuteButton(speakerphone_);
  pass(300ms);
  const bool isMutedOnDevice = desk_.audio.inputVolume(speakerphone_) == 0;
  if (desk_.teams.isMuted() != isMutedOnDevice) fail("a press did not arrive in Teams");
  pass(2s);
  if (coordinator_->isMuted() != isMutedOnDevice) fail("a press is not shown");
}

void WholeDay::checkNothingPending() {
  if (desk_.loop.pendingDelays().size() != timerCount) fail("something is pending");
  if (desk_.loop.waitingUtilityBlocks() != 0) fail("a reading is waiting");
  if (desk_.notifications.waitingAnswers() != 0) fail("a notification is waiting");
  // The device list's, the volume's and the one of the device in use.
  if (desk_.audio.listenerCount() != 3) fail("there are other listeners than three");
}

void WholeDay::checkHeap(int hour) {
  heapAtEnd_ = heapInUse();
  if (hour == 1) heapAtFirstHour_ = heapAtEnd_;
}

void WholeDay::pass(TimeInterval interval) {
  const Instant end =
      desk_.loop.now() + std::chrono::duration_cast<std::chrono::nanoseconds>(interval);
  for (bool turned = true; turned && !failure_;) {
    bool first = true;
    turned = desk_.loop.advanceUntil([&first] { return !std::exchange(first, false); },
                                     end - desk_.loop.now());
    if (!turned) return;
    ++turns_;
    std::vector<std::string> records;
    for (const LogRecord& record : desk_.log.takeRecords()) {
      if (record.text.find(", notified") != std::string::npos) continue;
      records.push_back(record.category + ": " + record.text);
    }
    if (auto wrong = invariants_.check(desk_.loop.now().time_since_epoch(), records)) fail(*wrong);
  }
}

void WholeDay::fail(const std::string& text) {
  if (failure_) return;
  const auto seconds =
      std::chrono::duration_cast<std::chrono::seconds>(desk_.loop.now().time_since_epoch());
  failure_ = "after " + std::to_string(seconds.count()) + " s: " + text;
}

}  // namespace hushbox
