// The battery's readings with a real power tool that never ends.

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/wait.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "battery/BatteryMonitor.h"
#include "platform/Platform.h"
#include "platform/linux/mainloop/GLibMainLoop.h"
#include "platform/linux/processes/SpawnedChildProcessFactory.h"
#include "platform/simulated/SimulatedAccessibilityTree.h"
#include "platform/simulated/SimulatedAudioHardware.h"
#include "platform/simulated/SimulatedLocale.h"
#include "platform/simulated/SimulatedLoginItem.h"
#include "platform/simulated/SimulatedMenuBar.h"
#include "platform/simulated/SimulatedUnifiedLog.h"
#include "platform/simulated/SimulatedUserNotifications.h"
#include "platform/simulated/SimulatedWorkspace.h"
#include "rehearsal/ScratchFolder.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/OwnProcess.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using own_process::descriptors;
using own_process::threads;
using rehearsal::holdsWithin;
using rehearsal::letPass;
using rehearsal::serverTimeout;

/// Real main loop, threads and children. A battery reading uses nothing else of the platform.
class SpawnedChildProcessBatteryTest : public testing::Test {
 protected:
  ~SpawnedChildProcessBatteryTest() override {
    monitor_.reset();
    processes_->endAll();
    loop_.finishUtilityWork();
  }

  /// Starts the first reading, of a tool that writes its process ID and then hangs.
  void start(std::chrono::milliseconds timeout) {
    const std::string tool = scratch_.path() / "tool";
    std::ofstream(tool) << "#!/bin/sh\necho $$ >>" << started_ << "\nexec sleep 600\n";
    std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
    ChildProcessRules rules;
    rules.standIns["/usr/bin/pmset"] = tool;
    rules.timeout = timeout;
    processes_.emplace(std::move(rules));
    scope_.emplace(Platform{loop_, audio_, accessibility_, workspace_, *processes_, notifications_,
                            loginItem_, menuBar_, log_, locale_});
    monitor_ = BatteryMonitor::make("Jabra");
  }

  /// The process IDs of all tools that were started.
  std::vector<int> started() const {
    std::ifstream file(started_);
    return {std::istream_iterator<int>(file), {}};
  }

  static std::size_t allocatedBytes() {
    const auto heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
  }

  GLibMainLoop loop_;
  std::optional<SpawnedChildProcessFactory> processes_;
  std::shared_ptr<BatteryMonitor> monitor_;

 private:
  rehearsal::ScratchFolder scratch_;
  const std::string started_ = scratch_.path() / "started";
  Journal journal_;
  SimulatedMainLoop clock_{journal_};
  SimulatedAudioHardware audio_{journal_, clock_};
  SimulatedAccessibilityTree accessibility_{journal_, clock_};
  SimulatedWorkspace workspace_{journal_, clock_};
  SimulatedUserNotifications notifications_{journal_, clock_};
  SimulatedLoginItem loginItem_{journal_, clock_};
  SimulatedMenuBar menuBar_{journal_, clock_};
  SimulatedUnifiedLog log_{journal_};
  SimulatedLocale locale_{journal_, clock_};
  std::optional<PlatformScope> scope_;
};

TEST_F(SpawnedChildProcessBatteryTest, ToolThatHangsHoldsTwoThreadsAndTwoChildren) {
  start(serverTimeout);
  monitor_->refresh({});
  monitor_->refresh({});
  ASSERT_TRUE(holdsWithin([&] { return started().size() == 2; }, serverTimeout));
  letPass(20ms);
  const auto threadsBefore = threads();
  const auto descriptorsBefore = descriptors();
  const auto bytesBefore = allocatedBytes();
  // As many minutes as an hour has, and then a week.
  for (int minute = 0; minute < 7 * 24 * 60; ++minute) {
    monitor_->refresh({});
    if (minute < 60) letPass(1ms);
  }
  EXPECT_LE(threads(), threadsBefore);
  EXPECT_LE(descriptors(), descriptorsBefore);
  EXPECT_LT(allocatedBytes(), bytesBefore + 10'000);
  EXPECT_EQ(started().size(), 2U);
}

TEST_F(SpawnedChildProcessBatteryTest, HourOfToolsThatHangLeavesNothingBehind) {
  int finished = 0;
  start(20ms);
  const auto minute = [&] {
    const int before = finished;
    monitor_->refresh([&] { ++finished; });
    EXPECT_TRUE(holdsWithin([&] { return finished > before; }, serverTimeout));
  };
  for (int warmingUp = 0; warmingUp < 3; ++warmingUp) minute();
  const auto threadsBefore = threads();
  const auto descriptorsBefore = descriptors();
  for (int i = 0; i < 60; ++i) minute();
  // The last reading's thread may still be exiting.
  EXPECT_TRUE(holdsWithin([&] { return threads() <= threadsBefore; }, serverTimeout));
  EXPECT_EQ(descriptors(), descriptorsBefore);
  EXPECT_EQ(monitor_->level(), std::nullopt);
  siginfo_t child{};
  EXPECT_EQ(waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT), -1) << "A child is left.";
}

}  // namespace
}  // namespace hushbox
