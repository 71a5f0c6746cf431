// core_instructions SUBJECT N [DEVICES]: does something N times on the simulated desk, once that is
// warm, and prints how many blocks of memory were not freed. script/bench runs it under callgrind,
// which counts the instructions and allocations in hushboxMeasured() only. SUBJECT "unchanged"
// counts something else: see countRedraws(). DEVICES other microphones are plugged in.

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <new>
#include <string>

#include "app/HushboxApp.h"
#include "battery/BatteryReading.h"
#include "benchmarks/PressCycle.h"
#include "support/ChangePublisher.h"
#include "support/Text.h"

namespace {

unsigned long liveBlocks = 0;

}  // namespace

// Not inlined, or the compiler sees a pointer of malloc() reach operator delete.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++liveBlocks;
  void* const memory = std::malloc(size);
  if (!memory) std::abort();
  return memory;
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (memory) --liveBlocks;
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  if (memory) --liveBlocks;
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

/// Prints how many announcements the program makes in a time in which nothing changes, and how
/// often it shows its icon or menu again.
int countRedraws(int seconds) {
  SimulatedDesk desk;
  desk.plugSpeakerphone();
  HushboxApp app;
  app.buildScene();
  desk.advance(TimeInterval{5});
  const std::size_t shown = desk.journal.callCount("menu");
  const std::size_t announced = ChangePublisher::announcementCount();
  // Without a call each poll announces that Teams' state is unknown, as it was before.
  desk.advance(TimeInterval{static_cast<double>(seconds)});
  std::printf("announcements %zu\n", ChangePublisher::announcementCount() - announced);
  std::printf("redraws %zu\n", desk.journal.callCount("menu") - shown);
  return 0;
}

int measure(const std::string& subject, int rounds, std::size_t devices) {
  PressCycle cycle;
  cycle.plugOthers(devices);
  const std::string report = longReport();
  std::size_t sum = 0;
  const std::map<std::string, std::function<void()>> subjects{
      {"presses", [&] { cycle.run(); }},
      {"volume", [&] { cycle.moveVolume(); }},
      {"devices", [&] { cycle.changeDeviceList(); }},
      {"hours",
       [&] {
         for (int i = 0; i < 3600; ++i) cycle.idleSecond();
       }},
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
  const int warmUps = subject == "hours" ? 1 : warmUpRounds;
  for (int i = 0; i < warmUps; ++i) found->second();
  const unsigned long liveBefore = liveBlocks;
  hushboxMeasured(found->second, rounds);
  std::printf("left %ld\n", static_cast<long>(liveBlocks) - static_cast<long>(liveBefore));
  return sum == 1 ? 1 : 0;
}

}  // namespace
}  // namespace hushbox

int main(int argc, char** argv) {
  if (argc != 3 && argc != 4) {
    std::fprintf(stderr, "usage: core_instructions SUBJECT N [DEVICES]\n");
    return 2;
  }
  const long devices = argc == 4 ? std::atol(argv[3]) : 0;
  if (argv[1] == std::string("unchanged")) return hushbox::countRedraws(std::atoi(argv[2]));
  return hushbox::measure(argv[1], std::atoi(argv[2]), static_cast<std::size_t>(devices));
}
