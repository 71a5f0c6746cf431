// Rehearses two calls with Hushbox on a private desktop of real servers and prints each step.
//
//   hushbox-rehearsal PROGRAM   rehearses with that Hushbox; exits with 1 if a step fails

#include <cstdio>
#include <exception>
#include <optional>
#include <string>

#include "rehearsal/RehearsedCall.h"
#include "rehearsal/StepReporter.h"

namespace hushbox::rehearsal {
namespace {

int rehearse(const std::string& program) {
  std::printf("Rehearsal: two calls on a private desktop of real servers.\n");
  StepReporter reporter;
  std::optional<RehearsedCall> call;
  reporter.run("Set up the desktop", [&] {
    call.emplace(program);
    return std::string(
        "session, system and accessibility bus, PulseAudio, UPower with an emulated battery;\n"
        "    on Xvfb: Chromium, xfce4-panel, dunst");
  });
  reporter.run("Start Hushbox", [&] { return call->startHushbox(); });
  reporter.run("The mask appears in the panel", [&] { return call->findItem(); });
  reporter.run("Plug in the speakerphone", [&] { return call->plugIn(); });
  reporter.run("Open a Teams meeting in the browser", [&] { return call->openMeeting(); });
  reporter.run("Start a call on the speakerphone's microphone", [&] { return call->startCall(); });
  reporter.run("Press the speakerphone's mute button",
               [&] { return call->pressButton(0.0, true); });
  reporter.run("Press it again", [&] { return call->pressButton(1.0, false); });
  reporter.run("Press it while another program resets the volume",
               [&] { return call->pressAndBounce(true); });
  reporter.run("Press it once more in the same way", [&] { return call->pressAndBounce(false); });
  reporter.run("Mute the microphone in Teams with the mouse",
               [&] { return call->clickInTeams(0.0); });
  reporter.run("Unmute it in Teams with the mouse", [&] { return call->clickInTeams(1.0); });
  reporter.run("End the call", [&] { return call->hangUp(); });
  reporter.run("Drain the speakerphone's battery", [&] { return call->drainBattery(); });
  reporter.run("Start another call", [&] { return call->startCallOnLowBattery(); });
  reporter.run("Click the mask in the panel", [&] { return call->openMenu(); });
  reporter.run("Click \"Launch at login\"", [&] { return call->switchLaunchAtLogin(true); });
  reporter.run("Click it again", [&] { return call->switchLaunchAtLogin(false); });
  reporter.run("End the call", [&] { return call->hangUp(); });
  reporter.run("Unplug the speakerphone", [&] { return call->unplug(); });
  reporter.run("Click \"Quit Hushbox\"", [&] { return call->quit(); });
  if (reporter.failed() > 0 && call) std::printf("Hushbox's log:\n%s", call->log().c_str());
  reporter.printSummary();
  return reporter.failed() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace hushbox::rehearsal

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: hushbox-rehearsal PROGRAM\n");
    return 2;
  }
  try {
    return hushbox::rehearsal::rehearse(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "hushbox-rehearsal: %s\n", error.what());
    return 1;
  }
}
