// press_overhead PROGRAM [PRESSES]: measures the time from a change of the speakerphone's volume to
// the press in the meeting page, through Hushbox (without its bounce window of 0.3 s) and through
// the shell loop that people write instead (pactl subscribe, pactl get-source-volume, xdotool key).
// Both take turns in one run on one desk.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "rehearsal/Desk.h"
#include "rehearsal/HushboxProcess.h"

namespace hushbox::rehearsal {
namespace {

using Clock = std::chrono::system_clock;
using Times = std::vector<double>;

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

double percentile(Times times, double fraction) {
  std::sort(times.begin(), times.end());
  return times[static_cast<std::size_t>(fraction * static_cast<double>(times.size() - 1) + 0.5)];
}

int measure(const std::string& program, int presses) {
  Desk desk({.display = true, .headlessBrowser = false, .speakerphone = true});
  // Desktops have a compositing manager; CompositingManager says why that matters.
  const auto compositingManager = desk.session().start("xcompmgr.log", {"xcompmgr"});
  MeetingPage meeting(desk.browser(), MeetingPage::Options{.window = WindowKind::App});
  const auto call = desk.audio().record();
  const std::string script = (desk.session().folder() / "loop.sh").string();
  std::ofstream(script) << shellLoop;
  Times ours;
  Times theirs;
  for (int round = 0; round < presses; round += 10) {
    {
      HushboxProcess hushbox(desk.session(), program);
      hushbox.waitForLog("Attached to");
      letPass(Milliseconds{2500});
      for (int i = 0; i < 5; ++i) {
        ours.push_back(press(desk, meeting, 0.0) - bounceWindowMilliseconds);
        ours.push_back(press(desk, meeting, 1.0));
      }
      hushbox.quit();
    }
    const auto loop = desk.session().start("loop.log", {"/bin/sh", script});
    letPass(Milliseconds{1000});
    for (int i = 0; i < 5; ++i) {
      theirs.push_back(press(desk, meeting, 0.0));
      theirs.push_back(press(desk, meeting, 1.0));
    }
  }
  const double ratio = percentile(ours, 0.5) / percentile(theirs, 0.5);
  std::printf("%zu presses each, milliseconds       median    99th\n", ours.size());
  std::printf("Hushbox, without the 0.3 s window  %8.2f %8.2f\n", percentile(ours, 0.5),
              percentile(ours, 0.99));
  std::printf("shell loop                         %8.2f %8.2f\n", percentile(theirs, 0.5),
              percentile(theirs, 0.99));
  std::printf("ratio of the medians               %8.3f\n", ratio);
  return 0;
}

}  // namespace
}  // namespace hushbox::rehearsal

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: press_overhead PROGRAM [PRESSES]\n");
    return 2;
  }
  try {
    return hushbox::rehearsal::measure(argv[1], argc > 2 ? std::atoi(argv[2]) : 100);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "press_overhead: %s\n", error.what());
    return 1;
  }
}
