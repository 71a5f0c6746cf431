// idle_cost PROGRAM [SECONDS]: measures Hushbox while nothing happens (the speakerphone plugged in,
// no call): private memory, voluntary context switches, and messages sent on the session bus. For
// comparison it measures two other items of the same panel, pasystray and volumeicon, in the same
// run. Exits with 1 if a limit is exceeded.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks/BusTraffic.h"
#include "benchmarks/ProcessCost.h"
#include "rehearsal/Desk.h"
#include "rehearsal/DeskError.h"
#include "rehearsal/HushboxProcess.h"
#include "rehearsal/Panel.h"
#include "rehearsal/PowerDaemon.h"

namespace hushbox::rehearsal {
namespace {

/// How long the programs get to finish starting.
constexpr Milliseconds settlingTime{15'000};
/// Short enough to see the thread that reads the battery, which runs for some milliseconds.
constexpr Milliseconds sampleInterval{4};

/// How often Teams is polled and the battery is read, in seconds.
constexpr int pollSeconds = 1;
constexpr int batterySeconds = 60;
constexpr int maxSwitchesPerTimer = 2;
/// Private memory relative to pasystray's.
constexpr double maxMemoryRatio = 0.35;

struct Measured {
  std::string name;
  std::unique_ptr<ServerProcess> server;
  ProcessCost cost;
};

Measured start(const Session& session, const std::string& name) {
  auto server = session.start(name + ".log", {name});
  const pid_t process = server->pid();
  return {name, std::move(server), ProcessCost(process)};
}

void sampleFor(std::vector<Measured>& all, std::chrono::seconds span) {
  const auto end = std::chrono::steady_clock::now() + span;
  while (std::chrono::steady_clock::now() < end) {
    for (Measured& one : all) one.cost.sample();
    letPass(sampleInterval);
  }
  for (const Measured& one : all) {
    if (one.server && !one.server->isRunning()) throw DeskError(one.name + " has exited");
  }
}

int report(const std::vector<Measured>& all, const BusTraffic& traffic, int seconds) {
  std::printf("%d idle seconds            private memory   voluntary switches\n", seconds);
  for (const Measured& one : all) {
    std::printf("%-24s %11ld KiB %20ld\n", one.name.c_str(), one.cost.privateMemory(),
                one.cost.switches());
  }
  const ProcessCost& hushbox = all.front().cost;
  const double ratio = static_cast<double>(hushbox.privateMemory()) /
                       static_cast<double>(all[1].cost.privateMemory());
  const int timers = seconds / pollSeconds + (seconds + batterySeconds - 1) / batterySeconds;
  const double perTimer = static_cast<double>(hushbox.switches()) / timers;
  std::printf("memory / %s's        %6.3f   (limit %.2f)\n", all[1].name.c_str(), ratio,
              maxMemoryRatio);
  std::printf("switches per timer firing   %6.3f   (limit %d; %d firings)\n", perTimer,
              maxSwitchesPerTimer, timers);
  std::printf("messages on the session bus %6lu   (limit 0; %zu connections)\n", traffic.messages(),
              traffic.connections());
  const bool withinLimits = ratio <= maxMemoryRatio && perTimer <= maxSwitchesPerTimer &&
                            traffic.messages() == 0 && traffic.connections() > 0;
  return withinLimits ? 0 : 1;
}

int measure(const std::string& program, int seconds) {
  Desk desk({.display = true,
             .speakerphone = true,
             .browser = false,
             .notifications = true,
             .systemBus = true});
  const Panel panel(desk.session());
  const PowerDaemon power(desk.session());
  const HushboxProcess hushbox(desk.session(), program);
  std::vector<Measured> all;
  all.push_back({"Hushbox", nullptr, ProcessCost(hushbox.pid())});
  all.push_back(start(desk.session(), "pasystray"));
  all.push_back(start(desk.session(), "volumeicon"));
  panel.waitForItem();
  letPass(settlingTime);
  const BusTraffic traffic(desk.session().busAddress(), hushbox.pid());
  sampleFor(all, std::chrono::seconds(seconds));
  return report(all, traffic, seconds);
}

}  // namespace
}  // namespace hushbox::rehearsal

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: idle_cost PROGRAM [SECONDS]\n");
    return 2;
  }
  try {
    return hushbox::rehearsal::measure(argv[1], argc > 2 ? std::max(1, std::atoi(argv[2])) : 60);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "idle_cost: %s\n", error.what());
    return 1;
  }
}
