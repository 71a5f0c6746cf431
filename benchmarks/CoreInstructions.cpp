// core_instructions SUBJECT N: does something N times on the simulated desk, once that is warm, and
// prints how often memory was allocated meanwhile. script/bench runs it under callgrind, which
// counts the instructions of hushboxMeasured() only.

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <new>
#include <string>

#include "battery/BatteryReading.h"
#include "benchmarks/PressCycle.h"
#include "support/Text.h"

namespace {

unsigned long allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  void* const memory = std::malloc(size);
  if (!memory) std::abort();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

/// The function between whose entry and exit callgrind counts.
extern "C" [[gnu::noinline]] void hushboxMeasured(const std::function<void()>& round, int rounds) {
  for (int i = 0; i < rounds; ++i) round();
}

namespace hushbox {
namespace {

constexpr int warmUpRounds = 50;

std::string longReport() {
  std::string report = "Now drawing from 'AC Power'\n";
  for (int i = 0; i < 8; ++i) report += " -Some Mouse (id=12)\t88%; discharging; present: true\n";
  return report + " -Jabra Speak2 75 (id=34)\t62%; discharging; present: true\n";
}

int measure(const std::string& subject, int rounds) {
  PressCycle cycle;
  const std::string report = longReport();
  std::size_t sum = 0;
  const std::map<std::string, std::function<void()>> subjects{
      {"presses", [&] { cycle.run(); }},
      {"volume", [&] { cycle.moveVolume(); }},
      {"polls", [&] { cycle.idleSecond(); }},
      {"labels", [&] { sum += text::lowercased("Unmute mic (⌘+Shift+M)").size(); }},
      {"reports",
       [&] { sum += static_cast<std::size_t>(parseBatteryReading(report, "Jabra")->level); }},
  };
  const auto found = subjects.find(subject);
  if (found == subjects.end()) {
    std::fprintf(stderr, "core_instructions: no subject '%s'\n", subject.c_str());
    return 2;
  }
  for (int i = 0; i < warmUpRounds; ++i) found->second();
  const unsigned long before = allocations;
  hushboxMeasured(found->second, rounds);
  std::printf("allocations %lu\n", allocations - before);
  return sum == 1 ? 1 : 0;
}

}  // namespace
}  // namespace hushbox

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: core_instructions SUBJECT N\n");
    return 2;
  }
  return hushbox::measure(argv[1], std::atoi(argv[2]));
}
