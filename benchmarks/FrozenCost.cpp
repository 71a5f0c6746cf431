// frozen_cost REPEATS: how long the main loop stands still while Teams' browser is frozen, beside a
// program on libatspi at its defaults. Both read the button once a second at the same time.

#include <cstdlib>

#include "benchmarks/Baseline.h"
#include "benchmarks/RunBenchmark.h"
#include "benchmarks/TeamsReader.h"
#include "benchmarks/baselines/LoopGap.h"

namespace hushbox {
namespace {

using rehearsal::Desk;
using rehearsal::MeetingPage;
using rehearsal::Milliseconds;

/// Longer than libatspi waits at its defaults.
constexpr int watchSeconds = 20;

void measure(int repeats) {
  Desk desk;
  MeetingPage meeting(desk.browser());
  const TeamsReader reader;
  reader.awaitTeams();
  Result result{.name = "longest gap of the main loop while Teams is frozen", .unit = "ms"};
  for (int i = 0; i < repeats; ++i) {
    const auto baseline = Baseline::libatspi(desk.session());
    if (baseline && baseline->ask("look") < 0) throw rehearsal::DeskError("libatspi found nothing");
    desk.browser().freeze();
    if (baseline) baseline->tell("watch " + std::to_string(watchSeconds));
    result.program.push_back(
        baselines::longestGap(watchSeconds, [] { TeamsUI::currentMuteState(); }));
    if (baseline) result.baselines[Baseline::libatspiName].push_back(baseline->answer());
    desk.browser().thaw();
    reader.awaitTeams();
  }
  if (!result.baselines.empty())
    result.goal = Result::Goal{.bound = 0.1, .ratioTo = Baseline::libatspiName};
  print(result);
}

}  // namespace
}  // namespace hushbox

int main(int argc, char** argv) {
  return hushbox::runBenchmark(argc, argv, "frozen_cost REPEATS", 1,
                               [](char** arguments) { hushbox::measure(std::atoi(arguments[0])); });
}
