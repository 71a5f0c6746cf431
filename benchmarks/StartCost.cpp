// start_cost PROGRAM: the instructions and system calls from the start of Hushbox until its item is
// registered and the speakerphone attached, and of its end, beside a bare program that opens the
// same connections. Counted by callgrind and strace, in Hushbox's own process.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/Result.h"
#include "benchmarks/RunBenchmark.h"
#include "rehearsal/Desk.h"
#include "rehearsal/DeskError.h"
#include "rehearsal/Panel.h"
#include "rehearsal/PowerDaemon.h"
#include "rehearsal/Programs.h"

namespace hushbox::rehearsal {
namespace {

constexpr const char* bare = "bare program";
constexpr double maxRatio = 3.0;

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// Runs the command until it has attached and registered, ends it, and returns what it wrote.
std::string runOnce(const Session& session, std::vector<std::string> command) {
  static int runs = 0;
  const std::string log = "start-" + std::to_string(++runs) + ".log";
  const auto process = session.start(log, std::move(command));
  process->waitUntilReady(
      [&] { return contentOf(session.folder() / log).find("Attached to") != std::string::npos; },
      "the speakerphone");
  letPass(Milliseconds{2000});
  process->stop(serverTimeout);
  return contentOf(session.folder() / log);
}

/// The number that follows `label`.
double numberAfter(const std::string& text, const std::string& label) {
  const std::size_t at = text.find(label);
  if (at == std::string::npos) throw DeskError("no '" + label + "' in: " + text.substr(0, 2000));
  return std::strtod(text.c_str() + at + label.size(), nullptr);
}

/// Without those of Hushbox's restart, which callgrind does not follow: with settings of the
/// allocator in its environment it does not restart.
double instructions(const Session& session, const std::string& program) {
  return numberAfter(
      runOnce(session, {"env", "GLIBC_TUNABLES=glibc.malloc.tcache_count=0", "valgrind",
                        "--tool=callgrind", "--callgrind-out-file=/dev/null", program}),
      "Collected : ");
}

/// The system calls of the program's own process, in all its threads.
double systemCalls(const Session& session, const std::string& program) {
  const std::string folder = (session.folder() / "calls").string();
  std::filesystem::remove_all(folder);
  std::filesystem::create_directory(folder);
  runOnce(session, {"strace", "-ff", "-o", folder + "/of", program});
  double count = 0;
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    const std::string calls = contentOf(file.path());
    // A child that became another program.
    const std::string_view name = "execve(\"";
    const std::size_t executed = calls.find(name);
    if (executed != std::string::npos &&
        calls.compare(executed + name.size(), program.size(), program) != 0)
      continue;
    count += static_cast<double>(std::ranges::count(calls, '\n'));
  }
  return count;
}

void measure(const std::string& program) {
  Desk desk({.display = true, .speakerphone = true, .browser = false, .systemBus = true});
  const Panel panel(desk.session());
  const PowerDaemon power(desk.session());
  const auto compare = [&](const std::string& unit, const std::string& tool, auto count) {
    if (!isInstalled(tool)) {
      return printSkipped(unit + ": " + tool + " is not installed");
    }
    Result result{.name = "start to a registered item and an attached speakerphone", .unit = unit};
    for (int i = 0; i < 2; ++i) {
      result.program.push_back(count(desk.session(), program));
      result.baselines[bare].push_back(count(desk.session(), HUSHBOX_BARE_PROGRAM));
    }
    result.goal = Result::Goal{.bound = maxRatio, .ratioTo = bare};
    print(result);
  };
  compare("instructions", "valgrind", instructions);
  compare("system calls", "strace", systemCalls);
}

}  // namespace
}  // namespace hushbox::rehearsal

int main(int argc, char** argv) {
  return hushbox::runBenchmark(argc, argv, "start_cost PROGRAM", 1,
                               [](char** arguments) { hushbox::rehearsal::measure(arguments[0]); });
}
