// The rehearsal: a call played on a desk of real servers and told line by line.
//
//   hushbox-rehearsal PROGRAM   plays with that Hushbox; exits with 1 when a step fails

#include <cmath>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "rehearsal/Desk.h"
#include "rehearsal/DeskError.h"
#include "rehearsal/Hushbox.h"
#include "rehearsal/Play.h"

namespace hushbox::rehearsal {
namespace {

using Clock = std::chrono::system_clock;

std::string milliseconds(Clock::duration span) {
  return std::to_string(std::chrono::round<Milliseconds>(span).count()) + " ms";
}

std::string percent(double volume) {
  return std::to_string(std::lround(volume * 100)) + " %";
}

/// The call and everything in it, with the steps that read it back.
class Call {
 public:
  Call(Desk& desk, const std::string& program) : desk_(desk), program_(program) {}

  std::string startHushbox() {
    hushbox_.emplace(desk_.session(), program_);
    return "Hushbox: " + hushbox_->waitForLog("Notification permission");
  }

  std::string plugIn() {
    desk_.audio().plugSpeakerphone();
    return "Hushbox: " + hushbox_->waitForLog("Attached to");
  }

  std::string openMeeting() {
    meeting_.emplace(desk_.browser(), MeetingPage::Options{.window = WindowKind::App});
    return "browser: the microphone button reads \"" + meeting_->label() + "\"";
  }

  std::string startCall() {
    stream_ = desk_.audio().record();
    return "Hushbox: " + hushbox_->waitForLog("Jabra mic in use -> true");
  }

  /// The device's button: it drives its own volume to zero, or back.
  std::string pressButton(double volume, bool muted) {
    return timed([&] { desk_.audio().setVolume(volume); }, muted);
  }

  std::string pressAndBounce(bool muted) {
    return timed(
        [&] {
          desk_.audio().setVolume(0.0);
          letPass(Milliseconds{100});
          desk_.audio().setVolume(1.0);
        },
        muted);
  }

  std::string clickInTeams(double volume) {
    hushbox_->mark();
    const std::size_t before = meeting_->presses().size();
    const auto start = Clock::now();
    meeting_->clickMicrophone();
    waitUntil([&] { return desk_.audio().volume() == volume; }, patience,
              "the speakerphone to follow Teams");
    const auto delay = Clock::now() - start;
    // Time enough for an echo to be mistaken for a press.
    letPass(Milliseconds{1200});
    const std::size_t echoes = meeting_->presses().size() - before - 1;
    if (echoes != 0) throw DeskError("the speakerphone's echo pressed Teams' button again");
    return "sound server: the speakerphone's volume is " + percent(desk_.audio().volume()) + ", " +
           milliseconds(delay) + " later; no echo";
  }

  std::string hangUp() {
    meeting_->leaveCall();
    stream_.reset();
    return "Hushbox: " + hushbox_->waitForLog("Jabra mic in use -> false");
  }

  std::string unplug() {
    desk_.audio().unplugSpeakerphone();
    return "Hushbox: " + hushbox_->waitForLog("Jabra input not present");
  }

  /// What Hushbox has logged, for when a step has failed.
  std::string log() const { return hushbox_ ? hushbox_->log() : std::string(); }

  std::string quit() {
    const int status = hushbox_->quit();
    if (status != 0) throw DeskError("Hushbox ended with " + std::to_string(status));
    return "Hushbox ended with 0";
  }

 private:
  template <typename Press>
  std::string timed(Press press, bool muted) {
    const std::size_t before = meeting_->presses().size();
    const auto start = Clock::now();
    press();
    meeting_->waitForMuted(muted);
    meeting_->waitForPresses(before + 1);
    const auto presses = meeting_->presses();
    if (presses.size() != before + 1) throw DeskError("Teams' button was pressed more than once");
    return "browser: the button reads \"" + meeting_->label() + "\", " +
           milliseconds(presses.back() - start) + " after the volume was written";
  }

  Desk& desk_;
  std::string program_;
  std::optional<Hushbox> hushbox_;
  std::optional<MeetingPage> meeting_;
  std::unique_ptr<RecordingStream> stream_;
};

int playCall(const std::string& program) {
  std::printf("Rehearsal: a private desk of real servers, and a call on it.\n");
  Play play;
  std::optional<Desk> desk;
  std::optional<Call> call;
  play.step("The desk is put up", [&] {
    desk.emplace(Desk::Options{.display = true, .headlessBrowser = false, .notifications = true});
    call.emplace(*desk, program);
    return std::string("session bus, accessibility bus, PulseAudio, Chromium on Xvfb, dunst");
  });
  play.step("Hushbox starts", [&] { return call->startHushbox(); });
  play.step("The speakerphone is plugged in", [&] { return call->plugIn(); });
  play.step("A Teams meeting opens in the browser", [&] { return call->openMeeting(); });
  play.step("The call takes the speakerphone's microphone", [&] { return call->startCall(); });
  play.step("The speakerphone's mute button is pressed",
            [&] { return call->pressButton(0.0, true); });
  play.step("It is pressed again", [&] { return call->pressButton(1.0, false); });
  play.step("It is pressed, and the calling host puts the volume straight back",
            [&] { return call->pressAndBounce(true); });
  play.step("The same again", [&] { return call->pressAndBounce(false); });
  play.step("The microphone is muted with the mouse, in Teams",
            [&] { return call->clickInTeams(0.0); });
  play.step("It is unmuted with the mouse, in Teams", [&] { return call->clickInTeams(1.0); });
  play.step("The call ends", [&] { return call->hangUp(); });
  play.step("The speakerphone is unplugged", [&] { return call->unplug(); });
  play.step("Hushbox is asked to quit", [&] { return call->quit(); });
  if (play.failed() > 0 && call) std::printf("Hushbox logged:\n%s", call->log().c_str());
  std::printf("%d steps went well, %d did not.\n", play.succeeded(), play.failed());
  return play.failed() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace hushbox::rehearsal

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: hushbox-rehearsal PROGRAM\n");
    return 2;
  }
  try {
    return hushbox::rehearsal::playCall(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "hushbox-rehearsal: %s\n", error.what());
    return 1;
  }
}
