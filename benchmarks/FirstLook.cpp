// first_look REPEATS: what it takes to find Teams' microphone button for the first time, by the
// number of elements in the page and by where the button is. A script on pyatspi, a program on
// libatspi and one on sequential D-Bus calls take turns. In Chromium, then in Firefox.

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/LookSamples.h"
#include "benchmarks/RunBenchmark.h"
#include "benchmarks/TeamsReader.h"
#include "rehearsal/Programs.h"
#include "tests/platform/linux/fixtures/AccessibleProgram.h"

namespace hushbox {
namespace {

using rehearsal::Desk;
using rehearsal::letPass;
using rehearsal::MeetingPage;
using rehearsal::Milliseconds;

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

/// A meeting page in the desk's browser.
class Search {
 public:
  Search(Desk& desk, int elements, Place place)
      : elements_(elements),
        place_(place),
        meeting_(desk.browser(), MeetingPage::Options{.extraElements = elements,
                                                      .controlsLast = place == Place::Late}),
        samples_(desk.session(), desk.browser().pid(), place != Place::Absent) {
    // The first search makes the browser present its page, which takes seconds for a large one.
    TeamsReader().awaitTeams();
    if (place_ == Place::Absent) meeting_.leaveCall();
    letPass(settlingTime);
  }
  ~Search() { meeting_.close(); }

  void run(int repeats) {
    samples_.take(repeats);
    std::optional<Result::Goal> goal;
    if (elements_ == largest && place_ != Place::Early)
      goal = Result::Goal{.bound = 0.02, .ratioTo = Baseline::pyatspiName};
    samples_.report("first look at " + std::to_string(elements_) + " elements, " + nameOf(place_),
                    goal);
    if (place_ == Place::Late) samples_.reportPoint(elements_);
  }

  void runAlone(int repeats) {
    samples_.takeAlone(repeats);
    samples_.reportPoint(elements_);
  }

 private:
  const int elements_;
  const Place place_;
  MeetingPage meeting_;
  LookSamples samples_;
};

/// Firefox, which shows the same page at Teams' address.
void measureFirefox(int repeats) {
  if (!rehearsal::isInstalled("firefox-esr") || !rehearsal::isInstalled("openssl"))
    return printSkipped("Firefox: firefox-esr and openssl are not both installed");
  Desk desk({.display = true, .audio = std::nullopt, .browser = false});
  for (const int elements : {400, 4'000, largest}) {
    for (const Place place : {Place::Early, Place::Late}) {
      const std::string query =
          "n=" + std::to_string(elements) + "&last=" + (place == Place::Late ? "1" : "0");
      const std::string folder = (desk.session().folder() / ("firefox?" + query)).string();
      const auto firefox =
          desk.session().start("firefox.log", {HUSHBOX_FIREFOX_MEETING, folder, query});
      TeamsReader().awaitTeams();
      letPass(settlingTime);
      LookSamples samples(desk.session(), firefox->pid(), true);
      samples.take(elements == largest ? std::max(1, repeats / 2) : repeats);
      samples.report("first look in Firefox at " + std::to_string(elements) + " elements, " +
                     nameOf(place));
      firefox->stop(rehearsal::serverTimeout);
    }
  }
}

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

void measureChromium(int repeats) {
  Desk desk;
  for (const int elements : {400, 4'000, largest}) {
    for (const Place place : {Place::Early, Place::Late, Place::Absent}) {
      Search search(desk, elements, place);
      search.run(elements == largest ? std::max(1, repeats / 2) : repeats);
    }
  }
  for (const int elements : {100, 100'000}) {
    Search search(desk, elements, Place::Late);
    search.runAlone(repeats);
  }
  // Last: for a while after many programs have exited, a first look takes twice as long.
  measurePrograms(desk, repeats);
}

}  // namespace
}  // namespace hushbox

int main(int argc, char** argv) {
  return hushbox::runBenchmark(argc, argv, "first_look REPEATS", 1, [](char** arguments) {
    const int repeats = std::atoi(arguments[0]);
    hushbox::measureChromium(repeats);
    hushbox::measureFirefox(repeats);
  });
}
