// The rehearsal: a call played on a desk of real servers and told line by line.
//
//   hushbox-rehearsal PROGRAM   plays with that Hushbox; exits with 1 when a step fails

#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "rehearsal/RehearsedCall.h"
#include "rehearsal/StepReporter.h"

namespace hushbox::rehearsal {
namespace {

int playCall(const std::string& program) {
  std::printf("Rehearsal: a private desk of real servers, and a call on it.\n");
  StepReporter play;
  std::optional<RehearsedCall> on;
  play.step("The desk is put up", [&] {
    on.emplace(program);
    return std::string(
        "session, system and accessibility bus, PulseAudio, UPower on an emulated battery;\n"
        "    on Xvfb: Chromium, xfce4-panel, dunst");
  });
  play.step("Hushbox starts", [&] { return on->startHushbox(); });
  play.step("The mask appears in the panel", [&] { return on->findItem(); });
  play.step("The speakerphone is plugged in", [&] { return on->plugIn(); });
  play.step("A Teams meeting opens in the browser", [&] { return on->openMeeting(); });
  play.step("The call takes the speakerphone's microphone", [&] { return on->startCall(); });
  play.step("The speakerphone's mute button is pressed",
            [&] { return on->pressButton(0.0, true); });
  play.step("It is pressed again", [&] { return on->pressButton(1.0, false); });
  play.step("It is pressed, and the calling host puts the volume straight back",
            [&] { return on->pressAndBounce(true); });
  play.step("The same again", [&] { return on->pressAndBounce(false); });
  play.step("The microphone is muted with the mouse, in Teams",
            [&] { return on->clickInTeams(0.0); });
  play.step("It is unmuted with the mouse, in Teams", [&] { return on->clickInTeams(1.0); });
  play.step("The call ends", [&] { return on->hangUp(); });
  play.step("The speakerphone's battery runs down", [&] { return on->runDownBattery(); });
  play.step("Another call starts", [&] { return on->startCallOnLowBattery(); });
  play.step("The mask in the panel is clicked on", [&] { return on->openMenu(); });
  play.step("\"Launch at login\" is clicked on", [&] { return on->switchLaunchAtLogin(true); });
  play.step("And once more", [&] { return on->switchLaunchAtLogin(false); });
  play.step("The call ends", [&] { return on->hangUp(); });
  play.step("The speakerphone is unplugged", [&] { return on->unplug(); });
  play.step("\"Quit Hushbox\" is clicked on", [&] { return on->quit(); });
  if (play.failed() > 0 && on) std::printf("Hushbox logged:\n%s", on->log().c_str());
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
