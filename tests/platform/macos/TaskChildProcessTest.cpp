#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "platform/macos/TaskChildProcessFactory.h"
#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

class TaskChildProcessTest : public MacFixture {
 protected:
  static std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  }

  std::unique_ptr<ChildProcess> echo(const std::vector<std::string>& words) {
    auto child = processes.make();
    child->setExecutablePath("/bin/echo");
    child->setArguments(words);
    return child;
  }

  /// Runs a command of the shell to its end; returns what it wrote to its standard output.
  std::string output(const std::string& command) {
    const auto child = processes.make();
    child->setExecutablePath("/bin/sh");
    child->setArguments({"-c", command});
    EXPECT_TRUE(child->launch());
    std::string read = child->readDataToEndOfFile();
    child->waitUntilExit();
    return read;
  }

  TaskChildProcessFactory processes;
};

TEST_F(TaskChildProcessTest, ReleasesProcessesAndPipes) {
  const auto round = [&] {
    const auto child = echo({"-g", "accps"});
    EXPECT_TRUE(child->launch());
    EXPECT_EQ(child->readDataToEndOfFile(), "-g accps\n");
    child->waitUntilExit();
    const auto absent = processes.make();
    absent->setExecutablePath("/nowhere/pmset");
    EXPECT_FALSE(absent->launch());
  };
  round();
  const long before = doubles::liveObjects();
  const auto descriptors = openDescriptors();
  for (int i = 0; i < 3; ++i) round();
  EXPECT_EQ(doubles::liveObjects(), before);
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_F(TaskChildProcessTest, ChildInheritsStandardInput) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "typed", 5), 5);
  close(ends[1]);
  const int before = dup(STDIN_FILENO);
  dup2(ends[0], STDIN_FILENO);
  close(ends[0]);
  EXPECT_EQ(output("cat"), "typed");
  dup2(before, STDIN_FILENO);
  close(before);
}

TEST_F(TaskChildProcessTest, ChildInheritsStandardError) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(output("printf reported >&2; printf shown"), "shown");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "reported");
}

TEST_F(TaskChildProcessTest, WaitEndsAfterTheChildAndNotWithItsOutput) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(output("printf x; exec >&-; sleep 0.1"), "x");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
}

TEST_F(TaskChildProcessTest, UnlaunchedProcessHasNoOutputAndIsNotWaitedFor) {
  const auto child = echo({});
  EXPECT_EQ(child->readDataToEndOfFile(), "");
  child->waitUntilExit();
}

TEST_F(TaskChildProcessTest, FailedLaunchLeavesNothingToReadOrWaitForAndCanBeRepeated) {
  const auto child = echo({"later"});
  child->setExecutablePath("/nowhere/pmset");
  EXPECT_FALSE(child->launch());
  EXPECT_EQ(child->readDataToEndOfFile(), "");
  child->waitUntilExit();
  child->setExecutablePath("/bin/echo");
  EXPECT_TRUE(child->launch());
  EXPECT_EQ(child->readDataToEndOfFile(), "later\n");
  child->waitUntilExit();
}

TEST_F(TaskChildProcessTest, RefusesASecondLaunch) {
  const auto child = echo({"once"});
  EXPECT_TRUE(child->launch());
  EXPECT_FALSE(child->launch());
  EXPECT_EQ(child->readDataToEndOfFile(), "once\n");
  child->waitUntilExit();
}

TEST_F(TaskChildProcessTest, RefusesTextThatTheSystemWouldTruncate) {
  using namespace std::string_literals;
  const auto child = echo({"a\0b"s});
  EXPECT_FALSE(child->launch());
  const auto other = processes.make();
  other->setExecutablePath("/bin/echo\0.txt"s);
  EXPECT_FALSE(other->launch());
}

TEST_F(TaskChildProcessTest, RunsTheLastPathWithTheLastArguments) {
  const auto child = echo({"first", "arguments"});
  child->setExecutablePath("/usr/bin/printf");
  child->setArguments({"%s", "last"});
  ASSERT_TRUE(child->launch());
  EXPECT_EQ(child->readDataToEndOfFile(), "last");
  child->waitUntilExit();
}

TEST_F(TaskChildProcessTest, LaunchFailsWithoutDescriptorsForThePipe) {
  // UBSan opens a pipe the first time that it meets a class. So it meets them all before.
  EXPECT_EQ(output("echo first"), "first\n");
  const auto child = echo({"never"});
  const std::size_t launchedBefore = doubles::launchedTasks();
  std::vector<int> all;
  for (int one; (one = dup(STDIN_FILENO)) >= 0;) all.push_back(one);
  const bool isLaunched = child->launch();
  for (const int one : all) close(one);
  EXPECT_FALSE(isLaunched);
  EXPECT_EQ(doubles::launchedTasks(), launchedBefore);
}

TEST_F(TaskChildProcessTest, RefusesAProcessWithoutAPath) {
  EXPECT_FALSE(processes.make()->launch());
}

}  // namespace
}  // namespace hushbox
