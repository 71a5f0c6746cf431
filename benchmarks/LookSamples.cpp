#include "benchmarks/LookSamples.h"

#include <cmath>
#include <fstream>

#include "rehearsal/DeskError.h"

namespace hushbox {

namespace {

/// The processor time of the browser's main thread so far, in milliseconds. While that thread
/// serves a search, it does not serve the browser's windows.
double mainThreadTime(pid_t browser) {
  std::ifstream file("/proc/" + std::to_string(browser) + "/task/" + std::to_string(browser) +
                     "/schedstat");
  double nanoseconds = 0;
  file >> nanoseconds;
  return nanoseconds / 1e6;
}

}  // namespace

void LookSamples::take(int repeats) {
  for (int i = 0; i < repeats; ++i) {
    lookWithHushbox();
    look(Baseline::pyatspiName, Baseline::pyatspi(session_));
    look(Baseline::libatspiName, Baseline::libatspi(session_));
    look(Baseline::sequentialName, Baseline::sequential(session_));
  }
}

void LookSamples::takeAlone(int repeats) {
  for (int i = 0; i < repeats; ++i) lookWithHushbox();
}

void LookSamples::report(const std::string& name, const std::optional<Result::Goal>& goal) const {
  print({.name = name,
         .unit = "ms",
         .program = ours_.milliseconds,
         .baselines = times_,
         .goal = goal});
  print({.name = name,
         .unit = "ms of the browser's main thread",
         .program = held_,
         .baselines = heldByOthers_});
  print({.name = name,
         .unit = "calls",
         .program = ours_.calls,
         .goal = Result::Goal{.bound = 30, .statistic = Result::Goal::Statistic::max}});
  print({.name = name, .unit = "round trips", .program = ours_.roundTrips});
}

void LookSamples::reportPoint(int elements) const {
  print({.name = "first look",
         .unit = "ms",
         .program = ours_.milliseconds,
         .baselines = times_,
         .point = Result::Point{"First look by number of elements", "elements", "",
                                static_cast<double>(elements)}});
}

void LookSamples::lookWithHushbox() {
  const TeamsReader reader;
  const double before = mainThreadTime(browser_);
  ours_.add(reader.read(hasButton_ ? std::optional(false) : std::nullopt));
  held_.push_back(mainThreadTime(browser_) - before);
}

void LookSamples::look(const std::string& name, std::unique_ptr<Baseline> baseline) {
  if (!baseline) return;
  const double before = mainThreadTime(browser_);
  const double taken = baseline->ask("look");
  if ((taken >= 0) != hasButton_) throw rehearsal::DeskError(name + " looked wrongly");
  times_[name].push_back(std::abs(taken));
  heldByOthers_[name].push_back(mainThreadTime(browser_) - before);
}

}  // namespace hushbox
