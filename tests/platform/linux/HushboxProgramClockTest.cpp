// The program while the machine's time of day is set, a year forward and two years back.

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <ctime>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "rehearsal/Desk.h"
#include "rehearsal/HushboxProcess.h"
#include "rehearsal/ItemMenu.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"
#include "tests/platform/linux/fixtures/SettableWallClock.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::AudioFlavour;
using rehearsal::Desk;
using rehearsal::letPass;
using rehearsal::serverTimeout;
using rehearsal::waitUntil;
using testing::ElementsAre;
using testing::HasSubstr;

// Not whole days, so that the status line shows another time.
constexpr std::chrono::hours yearForward{365 * 24 + 5};
constexpr std::chrono::hours yearBack{-365 * 24 - 7};

class HushboxProgramClockTest : public testing::TestWithParam<AudioFlavour> {
 protected:
  ~HushboxProgramClockTest() override {
    if (HasFailure() && program_) ADD_FAILURE() << "logged:\n" << program_->log();
  }

  void setUpDesk(Desk::Options options) {
    options.audio = GetParam();
    options.speakerphone = true;
    desk_.emplace(options);
    clock_.emplace(desk_->session().folder());
    bus_.emplace(desk_->session().busAddress());
    watcher_.emplace(desk_->session().busAddress());
  }

  void startProgram() {
    rehearsal::Environment environment = clock_->environment();
    // What timeOfDay() formats.
    environment["LC_ALL"] = "C";
    environment["TZ"] = "UTC";
    program_.emplace(desk_->session(), HUSHBOX_PROGRAM, environment);
    watcher_->waitForItem();
  }

  rehearsal::AudioServer& sound() { return desk_->audio(); }

  void waitForVolume(double volume) {
    waitUntil([&] { return sound().volume() == volume; }, serverTimeout,
              "the volume " + std::to_string(volume));
  }

  /// Waits for the status line `message` with the time of day that the program sees.
  void waitForStatus(const std::string& message) {
    const rehearsal::ItemMenu menu(*bus_, watcher_->items().front());
    waitUntil(
        [&] {
          for (const rehearsal::ItemMenu::Row& row : menu.rows()) {
            if (row.text == timeOfDay(0s) + "  " + message) return true;
            if (row.text == timeOfDay(-1min) + "  " + message) return true;
          }
          return false;
        },
        serverTimeout, "the status \"" + timeOfDay(0s) + "  " + message + "\"");
  }

  std::string timeOfDay(std::chrono::seconds later) const {
    const std::time_t moment = clock_->now() + later.count();
    std::tm utc{};
    std::array<char, 6> text{};
    std::strftime(text.data(), text.size(), "%H:%M", gmtime_r(&moment, &utc));
    return text.data();
  }

  /// What was logged since the call began, without the category, leaving out notifications.
  std::vector<std::string> loggedSinceTheCall() const {
    std::istringstream log(program_->log());
    std::vector<std::string> lines;
    for (std::string line; std::getline(log, line);) {
      if (line.starts_with("notify: ")) continue;
      lines.push_back(line.substr(line.find(": ") + 2));
      if (lines.back() == "Jabra mic in use -> true") lines.clear();
    }
    return lines;
  }

  std::optional<Desk> desk_;
  std::optional<SettableWallClock> clock_;
  std::optional<rehearsal::BusConnection> bus_;
  std::optional<Watcher> watcher_;
  std::unique_ptr<rehearsal::RecordingStream> call_;
  std::optional<rehearsal::HushboxProcess> program_;
};

TEST_P(HushboxProgramClockTest, CallIsUndisturbedByAYearForwardAndTwoYearsBack) {
  setUpDesk({});
  rehearsal::MeetingPage meeting(desk_->browser());
  startProgram();
  call_ = sound().record();
  program_->waitForLog("Jabra mic in use -> true");

  // Each jump in the bounce window of a press.
  sound().setVolume(0.0);
  letPass(50ms);
  clock_->setOffset(yearForward);
  meeting.waitForMuted(true);
  waitForStatus("Mute → Teams");
  sound().setVolume(1.0);
  meeting.waitForMuted(false);
  waitForStatus("Unmute → Teams");
  sound().setVolume(0.0);
  letPass(50ms);
  clock_->setOffset(yearBack);
  meeting.waitForMuted(true);
  waitForStatus("Mute → Teams");
  // The poll goes on.
  meeting.clickMicrophone();
  waitForVolume(1.0);
  waitForStatus("Teams unmuted → Jabra");
  program_->waitForLog("selfInitiated=true");

  EXPECT_EQ(meeting.presses().size(), 4U);
  EXPECT_THAT(loggedSinceTheCall(),
              ElementsAre(HasSubstr("muted=true selfInitiated=false"),
                          HasSubstr("Pressed Teams mic button"), "Mute → Teams",
                          HasSubstr("muted=false selfInitiated=false"),
                          HasSubstr("Pressed Teams mic button"), "Unmute → Teams",
                          HasSubstr("muted=true selfInitiated=false"),
                          HasSubstr("Pressed Teams mic button"), "Mute → Teams",
                          HasSubstr("Set Jabra input volume to 1.0"), "Teams unmuted → Jabra",
                          HasSubstr("muted=false selfInitiated=true")));
  EXPECT_EQ(program_->quit(), 0);
}

TEST_P(HushboxProgramClockTest, SoundServerIsFoundAgainWhileTheTimeOfDayRunsAway) {
  setUpDesk({.accessibility = false, .browser = false});
  startProgram();
  for (const auto step : {-24h, 24h}) {
    clock_->addPerReading(step);
    program_->mark();
    sound().kill();
    program_->waitForLog("Jabra input not present");
    sound().restart();
    program_->waitForLog("Attached to Jabra Speak2 75");
    sound().setVolume(0.0);
    program_->waitForLog("muted=true selfInitiated=false");
  }
  EXPECT_EQ(program_->quit(), 0);
}

INSTANTIATE_TEST_SUITE_P(PulseAudio, HushboxProgramClockTest,
                         testing::Values(AudioFlavour::PulseAudio),
                         [](const auto&) { return "PulseAudio"; });
INSTANTIATE_TEST_SUITE_P(PipeWire, HushboxProgramClockTest, testing::Values(AudioFlavour::PipeWire),
                         [](const auto&) { return "PipeWire"; });

}  // namespace
}  // namespace hushbox
