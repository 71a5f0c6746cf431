// idle_cost PROGRAM [SECONDS]: what Hushbox costs while nothing happens (the speakerphone plugged
// in, no call), beside two other items of the same panel, pasystray and volumeicon, in the same
// run: private memory, voluntary context switches, and the messages that Hushbox sends on the
// session bus. Exits with 1 where a limit is exceeded.

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

/// Time for everybody to come to rest.
constexpr Milliseconds settling{15'000};
/// Often enough to see a thread that reads the battery, which lives for some milliseconds.
constexpr Milliseconds samplePause{4};

/// In seconds: how often the poll of Teams and the reading of the battery are due.
constexpr int pollInterval = 1;
constexpr int batteryInterval = 60;
constexpr int switchesPerFiring = 2;
constexpr double memoryLimit = 0.35;

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
    letPass(samplePause);
  }
  for (const Measured& one : all) {
    if (one.server && !one.server->isRunning()) throw DeskError(one.name + " has ended");
  }
}

int judge(const std::vector<Measured>& all, const BusTraffic& traffic, int seconds) {
  std::printf("%d idle seconds            private memory   voluntary switches\n", seconds);
  for (const Measured& one : all) {
    std::printf("%-24s %11ld KiB %20ld\n", one.name.c_str(), one.cost.privateMemory(),
                one.cost.switches());
  }
  const ProcessCost& hushbox = all.front().cost;
  const double ratio = static_cast<double>(hushbox.privateMemory()) /
                       static_cast<double>(all[1].cost.privateMemory());
  const int firings = seconds / pollInterval + (seconds + batteryInterval - 1) / batteryInterval;
  const double perFiring = static_cast<double>(hushbox.switches()) / firings;
  std::printf("memory, of %s's      %6.3f   (limit %.2f)\n", all[1].name.c_str(), ratio,
              memoryLimit);
  std::printf("switches a timer firing     %6.3f   (limit %d; %d firings)\n", perFiring,
              switchesPerFiring, firings);
  std::printf("messages on the session bus %6lu   (limit 0; %zu connections)\n", traffic.messages(),
              traffic.connections());
  const bool good = ratio <= memoryLimit && perFiring <= switchesPerFiring &&
                    traffic.messages() == 0 && traffic.connections() > 0;
  return good ? 0 : 1;
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
  letPass(settling);
  const BusTraffic traffic(desk.session().busAddress(), hushbox.pid());
  sampleFor(all, std::chrono::seconds(seconds));
  return judge(all, traffic, seconds);
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
