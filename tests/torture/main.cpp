// Runs one long campaign on the simulated desk and prints one line about it.
//
//   hushbox_torture model HISTORIES EVENTS [FIRST-SEED]   the program against the model of its
//   rules hushbox_torture replay HISTORY                        one history that the model campaign
//   printed hushbox_torture search PRESS-DEPTH DEPTH              every state that the inputs can
//   lead to hushbox_torture days DAYS [FIRST-SEED]                whole days
//
// Exits with 1 if anything failed.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/scenarios/CallComparison.h"
#include "tests/scenarios/CallSearch.h"
#include "tests/scenarios/WholeDay.h"

namespace hushbox {
namespace {

using Arguments = std::vector<std::string>;

/// Returns the argument at `index` as a number, or `otherwise` if it is absent.
std::uint64_t number(const Arguments& arguments, std::size_t index, std::uint64_t otherwise) {
  return index < arguments.size() ? std::stoull(arguments[index]) : otherwise;
}

/// Prints the campaign's line. Returns the status to exit with.
class Campaign {
 public:
  explicit Campaign(std::string name) : name_(std::move(name)) {}

  void failed(const std::string& text) {
    ++failures_;
    std::printf("%s: FAILED: %s\n", name_.c_str(), text.c_str());
    std::fflush(stdout);
  }

  std::size_t failures() const { return failures_; }

  int finish(const std::string& what) const {
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start_;
    std::printf("%s: %s, %.0f s, %zu failures\n", name_.c_str(), what.c_str(), time.count(),
                failures_);
    return failures_ == 0 ? 0 : 1;
  }

 private:
  std::string name_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::size_t failures_ = 0;
};

/// Prints what is needed to run the difference again.
std::string describe(const CallHistory& history) {
  const CallHistory shorter = shrink(history, [](const CallHistory& candidate) {
    return compareWithModel(candidate).has_value();
  });
  const auto difference = compareWithModel(shorter);
  return (difference ? difference->text : "") + "Replay with: hushbox_torture replay '" +
         print(shorter) + "'";
}

int runModel(const Arguments& arguments) {
  constexpr std::size_t maxFailures = 5;
  Campaign campaign("model");
  const std::uint64_t histories = number(arguments, 0, 10'000);
  const std::uint64_t events = number(arguments, 1, 10'000);
  const std::uint64_t first = number(arguments, 2, 1);
  std::uint64_t done = 0;
  for (; done < histories && campaign.failures() < maxFailures; ++done) {
    const CallHistory history = randomCallHistory(first + done, events);
    if (!compareWithModel(history)) continue;
    campaign.failed("seed " + std::to_string(first + done) + "\n" + describe(history));
  }
  return campaign.finish(std::to_string(done * events) + " events in " + std::to_string(done) +
                         " histories");
}

int runReplay(const Arguments& arguments) {
  const auto history = parseCallHistory(arguments.empty() ? "" : arguments[0]);
  if (!history) {
    std::fprintf(stderr, "That is not a history.\n");
    return 2;
  }
  Campaign campaign("replay");
  if (const auto difference = compareWithModel(*history)) {
    campaign.failed("after event " + std::to_string(difference->event) + "\n" + difference->text);
  }
  return campaign.finish(std::to_string(history->size()) + " events");
}

int runSearch(const Arguments& arguments) {
  using Ties = ProgramOnDesk::Ties;
  const std::size_t pressDepth = number(arguments, 0, 7);
  const std::size_t depth = number(arguments, 1, 4);
  const std::pair<const char*, CallSearch> searches[] = {
      {"search of presses", {startedCall(), pressInputs(), pressDepth}},
      {"search of presses, ties reversed",
       {startedCall(), pressInputs(), pressDepth, Ties::lastScheduledFirst}},
      {"search of everything", {startedCall(), allInputs(), depth}},
      {"search of everything, ties reversed",
       {startedCall(), allInputs(), depth, Ties::lastScheduledFirst}},
      {"search from the start", {{}, allInputs(), depth}}};
  int status = 0;
  for (const auto& [name, search] : searches) {
    Campaign campaign(name);
    const CallSearch::Result result = search.run();
    if (result.failure) {
      campaign.failed(result.failure->text + "\nHistory: " + print(result.failure->history));
    }
    status |= campaign.finish(summary(result));
    std::fflush(stdout);
  }
  return status;
}

/// Returns the resident memory in KiB; 0 where there is no /proc.
std::size_t residentMemory() {
  std::ifstream file("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  file >> size >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) / 1024;
}

int runDays(const Arguments& arguments) {
  Campaign campaign("days");
  const std::uint64_t days = number(arguments, 0, 10'000);
  const std::uint64_t first = number(arguments, 1, 1);
  std::size_t events = 0;
  std::size_t turns = 0;
  std::size_t memoryAtTenth = 0;
  std::ptrdiff_t growth = 0;
  for (std::uint64_t i = 0; i < days; ++i) {
    WholeDay day(first + i);
    if (const auto failure = day.live()) {
      campaign.failed("seed " + std::to_string(first + i) + " " + *failure);
    }
    events += day.events();
    turns += day.turns();
    growth = std::max(growth, day.heapGrowth());
    if (i == 9) memoryAtTenth = residentMemory();
  }
  std::string memory;
  if (memoryAtTenth > 0) {
    memory = ", " + std::to_string(memoryAtTenth) + " KiB after the tenth day, " +
             std::to_string(residentMemory()) + " KiB after the last";
  }
  return campaign.finish(std::to_string(days) + " days of 24 hours, " + std::to_string(events) +
                         " events, " + std::to_string(turns) +
                         " turns of the loop, heap grew by at most " + std::to_string(growth) +
                         " bytes in a day" + memory);
}

int run(const Arguments& all) {
  const std::map<std::string, std::function<int(const Arguments&)>> campaigns = {
      {"model", runModel}, {"replay", runReplay}, {"search", runSearch}, {"days", runDays}};
  const auto campaign = all.empty() ? campaigns.end() : campaigns.find(all[0]);
  if (campaign == campaigns.end()) {
    std::fprintf(stderr, "hushbox_torture model|replay|search|days [ARGUMENT ...]\n");
    return 2;
  }
  return campaign->second(Arguments(all.begin() + 1, all.end()));
}

}  // namespace
}  // namespace hushbox

int main(int argc, char** argv) {
  return hushbox::run({argv + 1, argv + argc});
}
