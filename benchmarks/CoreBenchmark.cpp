// The time that the core takes per event on the simulated platform. Compare times within one run
// only.

#include <benchmark/benchmark.h>

#include "battery/BatteryReading.h"
#include "benchmarks/PressCycle.h"
#include "support/Text.h"

namespace hushbox {
namespace {

void pressAndRelease(benchmark::State& state) {
  PressCycle cycle;
  for (auto _ : state) cycle.run();
  state.counters["presses"] = static_cast<double>(cycle.presses());
}
BENCHMARK(pressAndRelease);

void pollWithCachedButton(benchmark::State& state) {
  PressCycle cycle;
  for (auto _ : state) cycle.idleSecond();
}
BENCHMARK(pollWithCachedButton);

void parseReport(benchmark::State& state) {
  std::string report = "Now drawing from 'AC Power'\n";
  for (int i = 0; i < 8; ++i) report += " -Some Mouse (id=12)\t88%; discharging; present: true\n";
  report += " -Jabra Speak2 75 (id=34)\t62%; discharging; present: true\n";
  for (auto _ : state) benchmark::DoNotOptimize(parseBatteryReading(report, "Jabra"));
}
BENCHMARK(parseReport);

void lowercaseLabel(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(text::lowercased("Unmute mic (⌘+Shift+M)"));
}
BENCHMARK(lowercaseLabel);

}  // namespace
}  // namespace hushbox
