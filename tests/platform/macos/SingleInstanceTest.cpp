#include "platform/macos/SingleInstance.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

class SingleInstanceTest : public MacFixture {
 protected:
  SingleInstanceTest() { run("com.example.hushbox", getpid(), false); }

  static void run(const std::string& bundle, pid_t process, bool finishedLaunching = true) {
    doubles::apps.push_back({bundle, process, finishedLaunching});
  }
};

TEST_F(SingleInstanceTest, IsFirstWhenOnlyOtherProgramsRun) {
  run("com.microsoft.teams2", 1);
  EXPECT_TRUE(SingleInstance::isFirst());
}

TEST_F(SingleInstanceTest, IgnoresItself) {
  doubles::apps.back().finishedLaunching = true;
  EXPECT_TRUE(SingleInstance::isFirst());
}

TEST_F(SingleInstanceTest, IsNotFirstWhenAnotherCopyRuns) {
  run("com.example.hushbox", getpid() + 1);
  EXPECT_FALSE(SingleInstance::isFirst());
}

TEST_F(SingleInstanceTest, IsFirstWhenTheOtherCopyHasTerminated) {
  run("com.example.hushbox", getpid() + 1);
  doubles::apps.back().terminated = true;
  EXPECT_TRUE(SingleInstance::isFirst());
}

TEST_F(SingleInstanceTest, LowerProcessIdentifierIsFirstOfTwoThatStartTogether) {
  run("com.example.hushbox", getpid() + 1, false);
  EXPECT_TRUE(SingleInstance::isFirst());
  run("com.example.hushbox", getpid() - 1, false);
  EXPECT_FALSE(SingleInstance::isFirst());
}

TEST_F(SingleInstanceTest, IsFirstOutsideABundle) {
  run("com.example.hushbox", getpid() + 1);
  doubles::setBundleIdentifier(std::nullopt);
  EXPECT_TRUE(SingleInstance::isFirst());
}

}  // namespace
}  // namespace hushbox
