// poll_cost POLLS GROWTH-POLLS: the D-Bus calls, round trips and time that a poll of Teams' mute
// state takes on a real browser while the button is cached: on a page that is drawn and on one that
// rests, and by the number of Teams pages and of elements. A script on pyatspi that holds the
// button takes turns.

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/Baseline.h"
#include "benchmarks/RunBenchmark.h"
#include "benchmarks/TeamsReader.h"

namespace hushbox {
namespace {

using rehearsal::Desk;
using rehearsal::letPass;
using rehearsal::MeetingPage;
using rehearsal::Milliseconds;
using Statistic = Result::Goal::Statistic;

/// Polls that bring everything up to date before any are counted.
constexpr int warmUpPolls = 3;

struct Polls {
  TeamsReaderSamples ours;
  Result::Samples theirs;
};

/// Polls once a second, as the program does: Hushbox on the second, the script half a second later.
Polls poll(Baseline* script, int count) {
  const TeamsReader reader;
  reader.awaitTeams();
  if (script && script->ask("look") < 0) throw rehearsal::DeskError("the script found no button");
  Polls polls;
  auto due = std::chrono::steady_clock::now();
  const auto letPassUntil = [](std::chrono::steady_clock::time_point moment) {
    const auto left = moment - std::chrono::steady_clock::now();
    letPass(std::max(Milliseconds{0}, std::chrono::duration_cast<Milliseconds>(left)));
  };
  for (int i = -warmUpPolls; i < count; ++i) {
    letPassUntil(due += Milliseconds{1000});
    const TeamsReader::Cost cost = reader.read();
    letPassUntil(due + Milliseconds{500});
    const double theirs = script ? script->ask("poll") : 0;
    if (i < 0) continue;
    polls.ours.add(cost);
    if (script) polls.theirs.push_back(theirs);
  }
  return polls;
}

std::map<std::string, Result::Samples> baselines(const Polls& polls) {
  if (polls.theirs.empty()) return {};
  return {{Baseline::pyatspiName, polls.theirs}};
}

void report(const std::string& page, const Polls& polls, double maxMilliseconds) {
  print({.name = "poll of a page that " + page,
         .unit = "ms",
         .program = polls.ours.milliseconds,
         .baselines = baselines(polls),
         .goal = Result::Goal{.bound = maxMilliseconds}});
  print({.name = "poll of a page that " + page,
         .unit = "round trips",
         .program = polls.ours.roundTrips,
         .goal = Result::Goal{.bound = 2, .statistic = Statistic::max}});
  print({.name = "poll of a page that " + page,
         .unit = "calls",
         .program = polls.ours.calls,
         .goal = Result::Goal{.bound = 12, .statistic = Statistic::max}});
}

void reportPoint(const std::string& axis, double x, const Polls& polls) {
  print({.name = "poll",
         .unit = "ms",
         .program = polls.ours.milliseconds,
         .baselines = baselines(polls),
         .point = Result::Point{"Poll by number of " + axis, axis, "", x}});
  print({.name = "poll",
         .unit = "D-Bus calls",
         .program = polls.ours.calls,
         .point = Result::Point{"Calls of a poll by number of " + axis, axis, "", x}});
}

void measure(int count, int growthCount) {
  Desk desk({.display = true, .headlessBrowser = false});
  // Desktops have a compositing manager; CompositingManager says why that matters.
  const auto compositingManager = desk.session().start("xcompmgr.log", {"xcompmgr"});
  std::unique_ptr<Baseline> script;
  const auto restartScript = [&] {
    script = Baseline::pyatspi(desk.session());
    return script.get();
  };
  {
    MeetingPage meeting(desk.browser(), MeetingPage::Options{.window = rehearsal::WindowKind::App});
    report("is drawn", poll(restartScript(), count), 1);
    meeting.page().minimise();
    report("rests", poll(restartScript(), count), 5);
    meeting.close();
  }
  for (const int elements : {100, 1'000, 10'000, 39'000}) {
    MeetingPage meeting(desk.browser(), MeetingPage::Options{.window = rehearsal::WindowKind::App,
                                                             .extraElements = elements});
    // The script would take ten seconds to find the button of the largest.
    reportPoint("elements", elements,
                poll(elements > 1'000 ? nullptr : restartScript(), growthCount));
    meeting.close();
  }
  std::vector<std::unique_ptr<MeetingPage>> pages;
  for (const std::size_t number : {1U, 2U, 4U, 8U, 16U}) {
    while (pages.size() < number) {
      pages.push_back(std::make_unique<MeetingPage>(
          desk.browser(), MeetingPage::Options{.window = rehearsal::WindowKind::App}));
    }
    reportPoint("Teams pages", static_cast<double>(number), poll(restartScript(), growthCount));
  }
}

}  // namespace
}  // namespace hushbox

int main(int argc, char** argv) {
  return hushbox::runBenchmark(argc, argv, "poll_cost POLLS GROWTH-POLLS", 2, [](char** arguments) {
    hushbox::measure(std::atoi(arguments[0]), std::atoi(arguments[1]));
  });
}
