#include <gtest/gtest.h>

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

  TaskChildProcessFactory processes;
};

TEST_F(TaskChildProcessTest, ProcessesAndPipesAreReleased) {
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

TEST_F(TaskChildProcessTest, ProcessThatWasNotLaunchedHasNoOutputAndIsNotWaitedFor) {
  const auto child = echo({});
  EXPECT_EQ(child->readDataToEndOfFile(), "");
  child->waitUntilExit();
}

TEST_F(TaskChildProcessTest, SecondLaunchIsRefused) {
  const auto child = echo({"once"});
  EXPECT_TRUE(child->launch());
  EXPECT_FALSE(child->launch());
  EXPECT_EQ(child->readDataToEndOfFile(), "once\n");
  child->waitUntilExit();
}

TEST_F(TaskChildProcessTest, WordsThatTheSystemWouldCutShortAreRefused) {
  using namespace std::string_literals;
  const auto child = echo({"a\0b"s});
  EXPECT_FALSE(child->launch());
  const auto other = processes.make();
  other->setExecutablePath("/bin/echo\0.txt"s);
  EXPECT_FALSE(other->launch());
}

TEST_F(TaskChildProcessTest, ProcessWithoutAPathIsRefused) {
  EXPECT_FALSE(processes.make()->launch());
}

}  // namespace
}  // namespace hushbox
