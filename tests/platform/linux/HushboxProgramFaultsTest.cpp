// The program when the system around it fails: stopped as in sleep, without descriptors, with
// little memory.

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "rehearsal/HushboxProcess.h"
#include "rehearsal/ItemMenu.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"
#include "tests/platform/linux/fixtures/Sanitized.h"
#include "tests/platform/linux/fixtures/StoppedProcess.h"

namespace hushbox {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using rehearsal::holdsWithin;
using rehearsal::letPass;
using rehearsal::serverTimeout;

class HushboxProgramFaultsTest : public PanelFixture {
 protected:
  HushboxProgramFaultsTest() : bus_(session_.busAddress()) {
    watcher_ = std::make_unique<Watcher>(session_.busAddress());
  }

  void startProgram(const std::string& program = HUSHBOX_PROGRAM) {
    program_.emplace(session_, program);
    watcher_->waitForItem();
    name_ = watcher_->items().back();
  }

  void toggleLaunchAtLogin() const { rehearsal::ItemMenu(bus_, name_).choose("Launch at login"); }

  /// With this as its limit, the program cannot open anything more. A lower limit would also keep
  /// it from polling what it has open.
  rlim_t lowestFreeDescriptor() const {
    const fs::path open = fs::path("/proc") / std::to_string(program_->pid()) / "fd";
    rlim_t lowest = 0;
    while (fs::is_symlink(fs::symlink_status(open / std::to_string(lowest)))) ++lowest;
    return lowest;
  }

  bool hasEntry() const {
    return fs::exists(session_.home() / ".config" / "autostart" / "org.hushbox.Hushbox.desktop");
  }

  rehearsal::BusConnection bus_;
  std::optional<rehearsal::HushboxProcess> program_;
};

TEST_F(HushboxProgramFaultsTest, ContinuesAfterItWasStopped) {
  startProgram();
  {
    const StoppedProcess stopped(program_->pid());
    // Longer than a poll, so that its timer is overdue. script/torture stops it for a minute.
    const char* const seconds = std::getenv("HUSHBOX_STOPPED_SECONDS");
    letPass(seconds ? std::chrono::seconds{std::atoi(seconds)} : 1500ms);
  }
  toggleLaunchAtLogin();
  EXPECT_TRUE(holdsWithin([this] { return hasEntry(); }, serverTimeout));
  EXPECT_EQ(program_->quit(), 0);
}

TEST_F(HushboxProgramFaultsTest, SurvivesRunningOutOfDescriptors) {
  startProgram();
  rlimit before{};
  ASSERT_EQ(prlimit(program_->pid(), RLIMIT_NOFILE, nullptr, &before), 0);
  const rlimit none{lowestFreeDescriptor(), before.rlim_max};
  ASSERT_EQ(prlimit(program_->pid(), RLIMIT_NOFILE, &none, nullptr), 0);
  // The entry is written only if the program closes something meanwhile.
  toggleLaunchAtLogin();
  letPass(1500ms);
  ASSERT_EQ(prlimit(program_->pid(), RLIMIT_NOFILE, &before, nullptr), 0);
  const bool hadEntry = hasEntry();
  toggleLaunchAtLogin();
  EXPECT_TRUE(holdsWithin([&] { return hasEntry() != hadEntry; }, serverTimeout));
  EXPECT_EQ(program_->quit(), 0);
}

TEST_F(HushboxProgramFaultsTest, RunsInSixtyFourMebibytes) {
  if (isSanitized) GTEST_SKIP() << "A sanitizer needs more memory than that.";
  startProgram();
  // Its data and its threads' stacks; the libraries' code is shared with other programs.
  const rlimit limit{64 * 1024 * 1024, 64 * 1024 * 1024};
  ASSERT_EQ(prlimit(program_->pid(), RLIMIT_DATA, &limit, nullptr), 0);
  toggleLaunchAtLogin();
  EXPECT_TRUE(holdsWithin([this] { return hasEntry(); }, serverTimeout));
  toggleLaunchAtLogin();
  EXPECT_TRUE(holdsWithin([this] { return !hasEntry(); }, serverTimeout));
  EXPECT_EQ(program_->quit(), 0);
}

}  // namespace
}  // namespace hushbox
