// idle_cost PROGRAM SECONDS: measures Hushbox while nothing happens, first without a call, then
// with one in which it polls Teams: memory, voluntary context switches, processor time, threads,
// descriptors, and messages sent on the buses by destination. Three other items of the same panel
// run beside it: pasystray, volumeicon and nm-applet, as far as they are installed.

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/BusTraffic.h"
#include "benchmarks/ProcessCost.h"
#include "benchmarks/Result.h"
#include "benchmarks/RunBenchmark.h"
#include "rehearsal/Desk.h"
#include "rehearsal/DeskError.h"
#include "rehearsal/HushboxProcess.h"
#include "rehearsal/Panel.h"
#include "rehearsal/PowerDaemon.h"
#include "rehearsal/Programs.h"

namespace hushbox::rehearsal {
namespace {

/// How long the programs get to finish starting, and to find Teams when the call starts.
constexpr Milliseconds settlingTime{15'000};
/// Short enough to see the thread that reads the battery, which runs for some milliseconds.
constexpr Milliseconds sampleInterval{4};

/// How often Teams is polled and the battery is read, in seconds.
constexpr int pollSeconds = 1;
constexpr int batterySeconds = 60;

struct Peer {
  std::string name;
  std::unique_ptr<ServerProcess> server;
};

/// The peers that are installed and keep running.
std::vector<Peer> startPeers(const Session& session) {
  std::vector<Peer> peers;
  for (const std::string name : {"pasystray", "volumeicon", "nm-applet"}) {
    if (isInstalled(name))
      peers.push_back({name, session.start(name + ".log", {name})});
    else
      std::printf("{\"skipped\": \"%s, which is not installed\"}\n", name.c_str());
  }
  return peers;
}

/// Measures Hushbox and its peers over the same span.
class Measurement {
 public:
  Measurement(Desk& desk, const HushboxProcess& hushbox, const std::vector<Peer>& peers)
      : sessionBus_(desk.session().busAddress(), hushbox.pid()),
        accessibilityBus_(desk.accessibility().address(), hushbox.pid()) {
    add(ours, hushbox.pid());
    for (const Peer& peer : peers)
      if (peer.server->isRunning()) add(peer.name, peer.server->pid());
  }

  void run(int seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (std::chrono::steady_clock::now() < end) {
      for (auto& [name, program] : programs_) program.cost.sample();
      letPass(sampleInterval);
    }
  }

  /// The figure of every program: Hushbox's as the program's, the others' as baselines.
  template <typename Figure>
  Result result(const std::string& name, const std::string& unit, Figure figure) const {
    Result result{.name = name, .unit = unit};
    for (const auto& [program, state] : programs_) {
      const auto value = static_cast<double>(figure(state));
      if (program == ours)
        result.program = {value};
      else
        result.baselines[program] = {value};
    }
    return result;
  }

  struct Program {
    ProcessCost cost;
    double processorTimeBefore;
  };

  double switches() const { return static_cast<double>(programs_.at(ours).cost.switches()); }
  const BusTraffic& sessionBus() const { return sessionBus_; }
  const BusTraffic& accessibilityBus() const { return accessibilityBus_; }

 private:
  static constexpr const char* ours = "Hushbox";

  void add(const std::string& name, pid_t process) {
    const ProcessCost cost(process);
    programs_.emplace(name, Program{cost, cost.processorTime()});
  }

  std::map<std::string, Program> programs_;
  BusTraffic sessionBus_;
  BusTraffic accessibilityBus_;
};

void reportMessages(const std::string& name, const BusTraffic& traffic,
                    std::optional<Result::Goal> goal = {}) {
  if (traffic.connections() == 0) throw DeskError("Hushbox has no connection to the bus");
  double sum = 0;
  for (const auto& [destination, count] : traffic.messages()) {
    sum += static_cast<double>(count);
    print({.name = name + ", to " + destination,
           .unit = "messages",
           .program = {static_cast<double>(count)}});
  }
  print({.name = name, .unit = "messages", .program = {sum}, .goal = goal});
}

void report(const Measurement& measured, const std::string& when, int seconds, bool isCall) {
  using Program = Measurement::Program;
  using Goal = Result::Goal;
  Result memory = measured.result("private memory " + when, "KiB", [](const Program& program) {
    return program.cost.privateMemory();
  });
  if (!isCall) memory.goal = Goal{.bound = 0.30, .ratioTo = "pasystray"};
  print(memory);
  print(measured.result("voluntary context switches " + when, "count",
                        [](const Program& program) { return program.cost.switches(); }));
  if (!isCall) {
    const int firings = seconds / pollSeconds + (seconds + batterySeconds - 1) / batterySeconds;
    print({.name = "switches per timer firing " + when,
           .unit = "count",
           .program = {measured.switches() / firings},
           .goal = Goal{.bound = 1.05}});
  }
  Result time =
      measured.result("processor time " + when, "% of one core", [&](const Program& program) {
        return (program.cost.processorTime() - program.processorTimeBefore) / (10.0 * seconds);
      });
  if (isCall) time.goal = Goal{.bound = 0.2};
  print(time);
  print(measured.result("threads " + when, "count",
                        [](const Program& program) { return program.cost.threads(); }));
  print(measured.result("descriptors " + when, "count",
                        [](const Program& program) { return program.cost.descriptors(); }));
  reportMessages("session bus " + when, measured.sessionBus(), Goal{.bound = 0});
  reportMessages("accessibility bus " + when, measured.accessibilityBus(),
                 isCall ? std::nullopt : std::optional(Goal{.bound = 0}));
}

void measure(const std::string& program, int seconds) {
  Desk desk({.display = true,
             .headlessBrowser = false,
             .speakerphone = true,
             .notifications = true,
             .systemBus = true});
  const auto compositingManager = desk.session().start("xcompmgr.log", {"xcompmgr"});
  const Panel panel(desk.session());
  const PowerDaemon power(desk.session());
  const HushboxProcess hushbox(desk.session(), program);
  const std::vector<Peer> peers = startPeers(desk.session());
  panel.waitForItem();
  letPass(settlingTime);
  const std::string span = std::to_string(seconds) + " s";
  {
    Measurement measured(desk, hushbox, peers);
    measured.run(seconds);
    report(measured, "in " + span + " without a call", seconds, false);
  }
  MeetingPage meeting(desk.browser(), MeetingPage::Options{.window = WindowKind::App});
  meeting.record();
  letPass(settlingTime);
  Measurement measured(desk, hushbox, peers);
  measured.run(seconds);
  report(measured, "in " + span + " of a call", seconds, true);
}

}  // namespace
}  // namespace hushbox::rehearsal

int main(int argc, char** argv) {
  return hushbox::runBenchmark(argc, argv, "idle_cost PROGRAM SECONDS", 2, [](char** arguments) {
    hushbox::rehearsal::measure(arguments[0], std::atoi(arguments[1]));
  });
}
