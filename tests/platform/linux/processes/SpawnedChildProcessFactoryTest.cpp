#include "platform/linux/processes/SpawnedChildProcessFactory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "rehearsal/ScratchFolder.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/OwnProcess.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::holdsWithin;
using rehearsal::serverTimeout;

constexpr const char* powerTool = "/usr/bin/pmset";

class SpawnedChildProcessFactoryTest : public testing::Test {
 protected:
  /// Writes a shell script as the power tool's stand-in.
  void script(const std::string& body) {
    std::ofstream(standIn_) << "#!/bin/sh\n" << body << '\n';
    std::filesystem::permissions(standIn_, std::filesystem::perms::owner_all);
  }

  ChildProcessRules rules(std::chrono::milliseconds timeout = serverTimeout) const {
    ChildProcessRules rules;
    rules.standIns[powerTool] = standIn_;
    rules.timeout = timeout;
    return rules;
  }

  /// Launches the stand-in, reads its output and waits, like the battery reading.
  std::string read(ChildProcessFactory& processes, std::vector<std::string> arguments = {}) const {
    const auto process = processes.make();
    process->setExecutablePath(powerTool);
    process->setArguments(arguments);
    EXPECT_TRUE(process->launch());
    std::string output = process->readDataToEndOfFile();
    process->waitUntilExit();
    return output;
  }

  /// The process ID that a script has written to that file; 0 for none yet.
  pid_t noted(const std::string& name) const {
    pid_t pid = 0;
    std::ifstream(scratch_.path() / name) >> pid;
    return pid;
  }
  std::string notePath(const std::string& name) const { return scratch_.path() / name; }

  /// Whether the process has exited; its new parent may not have reaped it yet.
  static bool isGone(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string number, name, state;
    return !(stat >> number >> name >> state) || state == "Z";
  }

  /// Reads from the stand-in, which notes its "pid", and calls endAll() meanwhile: it is killed,
  /// and the reading returns without output in less than `limit`.
  void expectEndAllToKill(SpawnedChildProcessFactory& processes, std::chrono::milliseconds limit) {
    auto reading = std::async(std::launch::async, [&] { return read(processes); });
    ASSERT_TRUE(holdsWithin([&] { return noted("pid") != 0; }, serverTimeout));
    const auto start = std::chrono::steady_clock::now();
    processes.endAll();
    EXPECT_EQ(reading.get(), "");
    EXPECT_LT(std::chrono::steady_clock::now() - start, limit);
    EXPECT_TRUE(isGone(noted("pid")));
  }

  rehearsal::ScratchFolder scratch_;
  std::string standIn_ = scratch_.path() / "stand-in";
};

TEST_F(SpawnedChildProcessFactoryTest, StandInGetsTheArgumentsAndItsOutputIsRead) {
  script(R"(printf '%s|' "$0" "$@"; printf 'no newline \377')");
  SpawnedChildProcessFactory processes{rules()};
  EXPECT_EQ(read(processes, {"-g", "accps", "", "a b"}),
            standIn_ + "|-g|accps||a b|no newline \377");
}

TEST_F(SpawnedChildProcessFactoryTest, OtherPathsRunUnchanged) {
  SpawnedChildProcessFactory processes{rules()};
  const auto process = processes.make();
  process->setExecutablePath("/bin/echo");
  process->setArguments({"plain"});
  ASSERT_TRUE(process->launch());
  EXPECT_EQ(process->readDataToEndOfFile(), "plain\n");
  process->waitUntilExit();
}

TEST_F(SpawnedChildProcessFactoryTest, IgnoresExitStatusAndStandardError) {
  script("echo report; echo trouble >/dev/null; exit 3");
  SpawnedChildProcessFactory processes{rules()};
  EXPECT_EQ(read(processes), "report\n");
}

TEST_F(SpawnedChildProcessFactoryTest, ReadsOutputLargerThanThePipeCompletely) {
  script("head -c 900000 /dev/zero");
  SpawnedChildProcessFactory processes{rules()};
  EXPECT_EQ(read(processes).size(), 900000U);
}

TEST_F(SpawnedChildProcessFactoryTest, LaunchFailsForFilesThatCannotRun) {
  SpawnedChildProcessFactory processes{rules()};
  std::ofstream(scratch_.path() / "plain") << "text";
  script("echo never");
  const std::string cutShort = standIn_ + std::string("\0tail", 5);
  for (const std::string& path : {notePath("missing"), notePath("plain"), scratch_.path().string(),
                                  std::string(), cutShort}) {
    const auto process = processes.make();
    process->setExecutablePath(path);
    EXPECT_FALSE(process->launch()) << path;
    EXPECT_EQ(process->readDataToEndOfFile(), "");
    process->waitUntilExit();
  }
  EXPECT_FALSE(processes.make()->launch());
}

TEST_F(SpawnedChildProcessFactoryTest, LaunchFailsWithoutDescriptorsForThePipe) {
  script("echo never");
  SpawnedChildProcessFactory processes{rules()};
  std::vector<int> all;
  for (int one; (one = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) all.push_back(one);
  const auto process = processes.make();
  process->setExecutablePath(powerTool);
  EXPECT_FALSE(process->launch());
  for (const int one : all) close(one);
}

TEST_F(SpawnedChildProcessFactoryTest, KillsAChildThatHangsAndDiscardsItsOutput) {
  script("echo $$ >" + notePath("pid") + "; echo half a report; exec sleep 60");
  SpawnedChildProcessFactory processes{rules(300ms)};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(read(processes), "");
  EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
  EXPECT_TRUE(isGone(noted("pid")));
}

TEST_F(SpawnedChildProcessFactoryTest, KillsAChildThatIsWaitedForAfterTheTimeout) {
  script("echo $$ >" + notePath("pid") + "; exec sleep 60");
  SpawnedChildProcessFactory processes{rules(50ms)};
  const auto process = processes.make();
  process->setExecutablePath(powerTool);
  ASSERT_TRUE(process->launch());
  ASSERT_TRUE(holdsWithin([&] { return noted("pid") != 0; }, serverTimeout));
  std::this_thread::sleep_for(60ms);
  const auto start = std::chrono::steady_clock::now();
  process->waitUntilExit();
  EXPECT_LT(std::chrono::steady_clock::now() - start, serverTimeout);
  EXPECT_TRUE(isGone(noted("pid")));
}

TEST_F(SpawnedChildProcessFactoryTest, KillsTheChildrenOfAChildThatHangs) {
  script("sleep 60 & echo $! >" + notePath("pid") + "; wait");
  SpawnedChildProcessFactory processes{rules(1s)};
  EXPECT_EQ(read(processes), "");
  EXPECT_TRUE(holdsWithin([&] { return noted("pid") && isGone(noted("pid")); }, serverTimeout));
}

TEST_F(SpawnedChildProcessFactoryTest, KillsAChildThatFloodsAndDiscardsItsOutput) {
  script("echo $$ >" + notePath("pid") + "; exec cat /dev/zero");
  SpawnedChildProcessFactory processes{rules()};
  EXPECT_EQ(read(processes), "");
  EXPECT_TRUE(isGone(noted("pid")));
}

TEST_F(SpawnedChildProcessFactoryTest, KillsAFloodThatIgnoresABrokenPipe) {
  script("trap '' PIPE; while :; do printf %65536s; done 2>/dev/null");
  SpawnedChildProcessFactory processes{rules()};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(read(processes), "");
  EXPECT_LT(std::chrono::steady_clock::now() - start, serverTimeout / 2);
}

TEST_F(SpawnedChildProcessFactoryTest, KillsAChildThatWritesBeyondTheTimeout) {
  script("echo $$ >" + notePath("pid") + "; while :; do printf x; sleep 0.01; done");
  SpawnedChildProcessFactory processes{rules(300ms)};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(read(processes), "");
  EXPECT_LT(std::chrono::steady_clock::now() - start, serverTimeout);
  EXPECT_TRUE(isGone(noted("pid")));
}

TEST_F(SpawnedChildProcessFactoryTest, KillsAChildThatClosesItsOutputAndHangs) {
  script("echo $$ >" + notePath("pid") + "; echo report; exec >/dev/null; exec sleep 60");
  SpawnedChildProcessFactory processes{rules(2s)};
  EXPECT_EQ(read(processes), "report\n");
  EXPECT_TRUE(isGone(noted("pid")));
}

TEST_F(SpawnedChildProcessFactoryTest, DoesNotWaitForADaemonThatHoldsTheOutputOpen) {
  script("setsid sh -c 'echo $$ >" + notePath("pid") + "; exec sleep 60' & echo report");
  SpawnedChildProcessFactory processes{rules(1s)};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(read(processes), "");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 20s);
  if (const pid_t daemon = noted("pid")) kill(daemon, SIGKILL);
}

TEST_F(SpawnedChildProcessFactoryTest, KillsAChildThatIsDestroyedUnread) {
  script("echo $$ >" + notePath("pid") + "; exec sleep 60");
  SpawnedChildProcessFactory processes{rules()};
  auto process = processes.make();
  process->setExecutablePath(powerTool);
  ASSERT_TRUE(process->launch());
  ASSERT_TRUE(holdsWithin([&] { return noted("pid") != 0; }, serverTimeout));
  process = nullptr;
  EXPECT_TRUE(isGone(noted("pid")));
}

TEST_F(SpawnedChildProcessFactoryTest, EndAllStopsWaitingAndPreventsLaunches) {
  script("echo $$ >" + notePath("pid") + "; exec sleep 60");
  SpawnedChildProcessFactory processes{rules()};
  expectEndAllToKill(processes, 20s);
  const auto later = processes.make();
  later->setExecutablePath("/bin/true");
  EXPECT_FALSE(later->launch());
}

TEST_F(SpawnedChildProcessFactoryTest, EndAllKillsAChildThatWritesAllTheTime) {
  script("echo $$ >" + notePath("pid") + "; while :; do printf x; sleep 0.01; done");
  SpawnedChildProcessFactory processes{rules()};
  expectEndAllToKill(processes, serverTimeout / 2);
}

TEST_F(SpawnedChildProcessFactoryTest, ReadsWhatAChildWroteBeforeASignalKilledIt) {
  script("echo half a report; kill -KILL $$");
  SpawnedChildProcessFactory processes{rules()};
  const auto before = own_process::descriptors();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(read(processes), "half a report\n");
  EXPECT_LT(std::chrono::steady_clock::now() - start, serverTimeout / 2);
  EXPECT_EQ(own_process::descriptors(), before);
  siginfo_t zombie{};
  waitid(P_ALL, 0, &zombie, WEXITED | WNOHANG | WNOWAIT);
  EXPECT_EQ(zombie.si_pid, 0);
}

TEST_F(SpawnedChildProcessFactoryTest, ProcessMayOutliveTheFactory) {
  script("echo report");
  auto process = SpawnedChildProcessFactory{rules()}.make();
  process->setExecutablePath(powerTool);
  ASSERT_TRUE(process->launch());
  EXPECT_EQ(process->readDataToEndOfFile(), "report\n");
}

TEST_F(SpawnedChildProcessFactoryTest, ParallelChildrenKeepTheirOutputApart) {
  script("sleep 0.05; echo $1");
  SpawnedChildProcessFactory processes{rules()};
  std::vector<std::future<std::string>> readings;
  for (int i = 0; i < 8; ++i)
    readings.push_back(
        std::async(std::launch::async, [&, i] { return read(processes, {std::to_string(i)}); }));
  for (std::size_t i = 0; i < readings.size(); ++i)
    EXPECT_EQ(readings[i].get(), std::to_string(i) + "\n");
}

TEST_F(SpawnedChildProcessFactoryTest, ChildInheritsNoDescriptorsAndNoSignalSettings) {
  script("ls /proc/self/fd | wc -l; sed -n 's/Sig[BI][lg][kn]://p' /proc/self/status");
  const int leaked = open("/dev/null", O_RDONLY);
  ASSERT_GE(leaked, 0);
  sigset_t blocked, before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGUSR1);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto handler = signal(SIGPIPE, SIG_IGN);
  SpawnedChildProcessFactory processes{rules()};
  std::istringstream output(read(processes));
  signal(SIGPIPE, handler);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  close(leaked);

  int descriptors = 0;
  std::uint64_t blockedThere = 1, ignoredThere = ~std::uint64_t{0};
  output >> descriptors >> std::hex >> blockedThere >> ignoredThere;
  // The standard streams, and the descriptor with which ls reads the folder.
  EXPECT_EQ(descriptors, 4);
  EXPECT_EQ(blockedThere, 0U);
  EXPECT_EQ(ignoredThere & std::uint64_t{1} << (SIGPIPE - 1), 0U);
}

TEST_F(SpawnedChildProcessFactoryTest, LeavesNoDescriptorAndNoZombieAndOtherChildrenAlone) {
  script("echo report");
  SpawnedChildProcessFactory processes{rules()};
  const pid_t other = fork();
  if (other == 0) _exit(7);
  const auto before = own_process::descriptors();
  for (int i = 0; i < 10; ++i) read(processes);
  EXPECT_EQ(own_process::descriptors(), before);
  int status = 0;
  EXPECT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(WEXITSTATUS(status), 7);
  siginfo_t zombie{};
  waitid(P_ALL, 0, &zombie, WEXITED | WNOHANG | WNOWAIT);
  EXPECT_EQ(zombie.si_pid, 0);
}

}  // namespace
}  // namespace hushbox
