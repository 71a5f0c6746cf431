// first_look REPEATS: what it takes to find Teams' microphone button for the first time, by the
// number of elements in the page and by where the button is. A script on pyatspi, a program on
// libatspi and one on sequential D-Bus calls take turns. Each sample has new programs.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/Baseline.h"
#include "benchmarks/RunBenchmark.h"
#include "benchmarks/TeamsReader.h"
#include "tests/platform/linux/fixtures/AccessibleProgram.h"

namespace hushbox {
namespace {

using rehearsal::Desk;
using rehearsal::letPass;
using rehearsal::MeetingPage;
using rehearsal::Milliseconds;
using Statistic = Result::Goal::Statistic;

constexpr int largest = 39'000;
constexpr Milliseconds settlingTime{1000};

enum class Place { Early, Late, Absent };

const char* nameOf(Place place) {
  switch (place) {
    case Place::Early:
      return "button early";
    case Place::Late:
      return "button late";
    case Place::Absent:
      break;
  }
  return "no button";
}

/// The processor time of the browser's main thread so far, in milliseconds. While that thread
/// serves a search, it does not serve the browser's windows.
double mainThreadTime(pid_t browser) {
  std::ifstream file("/proc/" + std::to_string(browser) + "/task/" + std::to_string(browser) +
                     "/schedstat");
  double nanoseconds = 0;
  file >> nanoseconds;
  return nanoseconds / 1e6;
}

/// One kind of page, with the samples of every program that searched it.
class Search {
 public:
  Search(Desk& desk, int elements, Place place)
      : desk_(desk),
        elements_(elements),
        place_(place),
        meeting_(desk.browser(), MeetingPage::Options{.extraElements = elements,
                                                      .controlsLast = place == Place::Late}) {
    // The first search makes the browser present its page, which takes seconds for a large one.
    TeamsReader().awaitTeams();
    if (place_ == Place::Absent) meeting_.leaveCall();
    letPass(settlingTime);
  }

  void run(int repeats) {
    for (int i = 0; i < repeats; ++i) {
      lookWithHushbox();
      look(Baseline::pyatspiName, Baseline::pyatspi(desk_.session()));
      look(Baseline::libatspiName, Baseline::libatspi(desk_.session()));
      look(Baseline::sequentialName, Baseline::sequential(desk_.session()));
    }
    meeting_.close();
  }

  void report() const {
    const std::string name =
        "first look at " + std::to_string(elements_) + " elements, " + nameOf(place_);
    std::optional<Result::Goal> goal;
    if (elements_ == largest && place_ != Place::Early)
      goal = Result::Goal{.bound = 0.02, .ratioTo = Baseline::pyatspiName};
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
           .goal = Result::Goal{.bound = 30, .statistic = Statistic::max}});
    print({.name = name, .unit = "round trips", .program = ours_.roundTrips});
    if (place_ == Place::Late) reportPoint();
  }

  /// Looks with Hushbox only, because the others would take minutes.
  void runAlone(int repeats) {
    for (int i = 0; i < repeats; ++i) lookWithHushbox();
    meeting_.close();
  }

  void reportPoint() const {
    print({.name = "first look",
           .unit = "ms",
           .program = ours_.milliseconds,
           .baselines = times_,
           .point = Result::Point{"First look by number of elements", "elements", "",
                                  static_cast<double>(elements_)}});
  }

 private:
  double browserTime() const { return mainThreadTime(desk_.browser().pid()); }

  void lookWithHushbox() {
    const TeamsReader reader;
    const double before = browserTime();
    ours_.add(reader.read(place_ == Place::Absent ? std::nullopt : std::optional(false)));
    held_.push_back(browserTime() - before);
  }

  void look(const std::string& name, std::unique_ptr<Baseline> baseline) {
    if (!baseline) return;
    const double before = browserTime();
    const double taken = baseline->ask("look");
    if ((taken < 0) != (place_ == Place::Absent))
      throw rehearsal::DeskError(name + " looked wrongly");
    times_[name].push_back(std::abs(taken));
    heldByOthers_[name].push_back(browserTime() - before);
  }

  Desk& desk_;
  const int elements_;
  const Place place_;
  MeetingPage meeting_;
  TeamsReaderSamples ours_;
  Result::Samples held_;
  std::map<std::string, Result::Samples> times_;
  std::map<std::string, Result::Samples> heldByOthers_;
};

/// Other programs on the accessibility bus, without documents.
void measurePrograms(Desk& desk, int repeats) {
  MeetingPage meeting(desk.browser());
  TeamsReader().awaitTeams();
  std::vector<std::unique_ptr<AccessibleProgram>> programs;
  for (const std::size_t number : {1U, 10U, 50U, 200U}) {
    while (programs.size() < number) {
      programs.push_back(
          std::make_unique<AccessibleProgram>(desk.accessibility().address(), "Editor", "gtk"));
    }
    TeamsReaderSamples looks;
    TeamsReaderSamples polls;
    for (int i = 0; i < repeats; ++i) {
      const TeamsReader reader;
      looks.add(reader.read());
      letPass(settlingTime);
      polls.add(reader.read());
    }
    const auto report = [&](const char* series, const TeamsReaderSamples& samples) {
      print({.name = "programs",
             .unit = "D-Bus calls",
             .program = samples.calls,
             .point = Result::Point{"Calls by number of programs on the bus", "programs", series,
                                    static_cast<double>(number)}});
    };
    report("first look", looks);
    report("poll", polls);
  }
}

void measure(int repeats) {
  Desk desk;
  for (const int elements : {400, 4'000, largest}) {
    for (const Place place : {Place::Early, Place::Late, Place::Absent}) {
      Search search(desk, elements, place);
      search.run(elements == largest ? std::max(1, repeats / 2) : repeats);
      search.report();
    }
  }
  for (const int elements : {100, 100'000}) {
    Search search(desk, elements, Place::Late);
    search.runAlone(repeats);
    search.reportPoint();
  }
  // Last: for a while after many programs have exited, a first look takes twice as long.
  measurePrograms(desk, repeats);
}

}  // namespace
}  // namespace hushbox

int main(int argc, char** argv) {
  return hushbox::runBenchmark(argc, argv, "first_look REPEATS", 1,
                               [](char** arguments) { hushbox::measure(std::atoi(arguments[0])); });
}
