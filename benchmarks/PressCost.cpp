// press_cost PROGRAM PRESSES: measures the time from a change of the speakerphone's volume to the
// press in the meeting page, through Hushbox (without its bounce window of 0.3 s) and through the
// shell loop that people write instead (pactl subscribe, pactl get-source-volume, xdotool key).
// Both take turns in one run on one desk. Then the same through Hushbox alone where it is slow: on
// a page that rests, and when the button has to be found first.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "benchmarks/Result.h"
#include "benchmarks/RunBenchmark.h"
#include "rehearsal/Desk.h"
#include "rehearsal/HushboxProcess.h"

namespace hushbox::rehearsal {
namespace {

using Clock = std::chrono::system_clock;
using Times = Result::Samples;

constexpr double bounceWindowMilliseconds = 300.0;

constexpr const char* shellLoop = R"(#!/bin/sh
export LC_ALL=C
last=100
pactl subscribe | while read -r line; do
  case "$line" in *"'change' on source "*) ;; *) continue ;; esac
  now=$(pactl get-source-volume alsa_input.usb-Jabra_Speak2_75 | sed -n 's/.* \([0-9]*\)% .*/\1/p;q')
  [ "$now" = "$last" ] && continue
  last=$now
  xdotool key --clearmodifiers ctrl+shift+m
done
)";

/// Milliseconds from the change of the volume to the press in the page.
double press(Desk& desk, MeetingPage& meeting, double volume) {
  const std::size_t before = meeting.presses().size();
  const auto start = Clock::now();
  desk.audio().setVolume(volume);
  meeting.waitForPresses(before + 1);
  const std::chrono::duration<double, std::milli> taken = meeting.presses().back() - start;
  // The shell loop needs some time until it reads the next event.
  letPass(Milliseconds{150});
  return taken.count();
}

/// The same through Hushbox, without its bounce window, for which only a mute waits.
double pressThroughHushbox(Desk& desk, MeetingPage& meeting, bool mutes) {
  const double taken = press(desk, meeting, mutes ? 0.0 : 1.0);
  return mutes ? taken - bounceWindowMilliseconds : taken;
}

/// Runs Hushbox and presses as often, muting and unmuting in turn.
Times pressWithHushbox(Desk& desk, MeetingPage& meeting, const std::string& program, int presses) {
  HushboxProcess hushbox(desk.session(), program);
  hushbox.waitForLog("Attached to");
  letPass(Milliseconds{2500});
  Times times;
  for (int i = 0; i < presses; ++i) times.push_back(pressThroughHushbox(desk, meeting, i % 2 == 0));
  hushbox.quit();
  return times;
}

Times pressWithLoop(Desk& desk, MeetingPage& meeting, const std::string& script, int presses) {
  const auto loop = desk.session().start("loop.log", {"/bin/sh", script});
  letPass(Milliseconds{1000});
  Times times;
  for (int i = 0; i < presses; ++i) times.push_back(press(desk, meeting, i % 2 == 0 ? 0.0 : 1.0));
  return times;
}

void measureBesideLoop(Desk& desk, const std::string& program, int presses) {
  MeetingPage meeting(desk.browser(), MeetingPage::Options{.window = WindowKind::App});
  meeting.record();
  const std::string script = (desk.session().folder() / "loop.sh").string();
  std::ofstream(script) << shellLoop;
  Result result{.name = "press, without the window of 0.3 s", .unit = "ms"};
  constexpr int pressesPerTurn = 10;
  constexpr const char* shell = "shell loop";
  for (int round = 0; round < presses; round += pressesPerTurn) {
    std::ranges::copy(pressWithHushbox(desk, meeting, program, pressesPerTurn),
                      std::back_inserter(result.program));
    std::ranges::copy(pressWithLoop(desk, meeting, script, pressesPerTurn),
                      std::back_inserter(result.baselines[shell]));
  }
  result.goal = Result::Goal{.bound = 0.08, .ratioTo = shell};
  print(result);
  result.baselines.clear();
  result.goal = Result::Goal{.bound = 10, .statistic = Result::Goal::Statistic::percentile99};
  print(result);
  meeting.page().minimise();
  print({.name = "press on a page that rests",
         .unit = "ms",
         .program = pressWithHushbox(desk, meeting, program, presses)});
  meeting.close();
}

/// Without a call nothing is polled, so a press has to find a button that is new.
void measureNewButton(Desk& desk, const std::string& program, int presses) {
  constexpr int elements = 39'000;
  constexpr Milliseconds settlingTime{2000};
  MeetingPage meeting(desk.browser(),
                      MeetingPage::Options{.window = WindowKind::App, .extraElements = elements});
  desk.audio().setVolume(1.0);
  HushboxProcess hushbox(desk.session(), program);
  letPass(settlingTime);
  // The first search makes the browser present the page, which takes longer than Hushbox waits.
  for (const double volume : {0.0, 1.0}) {
    desk.audio().setVolume(volume);
    letPass(settlingTime);
  }
  Result result{.name = "press of a new button among 39,000 elements", .unit = "ms"};
  for (int i = 0; i < presses; ++i) {
    meeting.leaveCall();
    meeting.joinCall();
    letPass(settlingTime);
    result.program.push_back(pressThroughHushbox(desk, meeting, i % 2 == 0));
  }
  print(result);
  hushbox.quit();
}

void measure(const std::string& program, int presses) {
  Desk desk({.display = true, .headlessBrowser = false, .speakerphone = true});
  // Desktops have a compositing manager; CompositingManager says why that matters.
  const auto compositingManager = desk.session().start("xcompmgr.log", {"xcompmgr"});
  measureBesideLoop(desk, program, presses);
  measureNewButton(desk, program, std::clamp(presses / 10, 3, 10));
}

}  // namespace
}  // namespace hushbox::rehearsal

int main(int argc, char** argv) {
  return hushbox::runBenchmark(argc, argv, "press_cost PROGRAM PRESSES", 2, [](char** arguments) {
    hushbox::rehearsal::measure(arguments[0], std::atoi(arguments[1]));
  });
}
