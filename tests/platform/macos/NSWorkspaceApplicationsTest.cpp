#include "platform/macos/NSWorkspaceApplications.h"

#include <gtest/gtest.h>

#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

class NSWorkspaceApplicationsTest : public MacFixture {
 protected:
  NSWorkspaceApplications workspace;
};

TEST_F(NSWorkspaceApplicationsTest, ListsNothingWhenNothingRuns) {
  EXPECT_TRUE(workspace.runningApplications().empty());
}

TEST_F(NSWorkspaceApplicationsTest, KeepsTheOrderOfTheSystem) {
  doubles::apps = {
      {"com.microsoft.teams", 502}, {"com.apple.finder", 77}, {"com.microsoft.teams2", 501}};
  const auto running = workspace.runningApplications();
  ASSERT_EQ(running.size(), 3U);
  EXPECT_EQ(running[0].bundleIdentifier, "com.microsoft.teams");
  EXPECT_EQ(running[1].bundleIdentifier, "com.apple.finder");
  EXPECT_EQ(running[2].bundleIdentifier, "com.microsoft.teams2");
  EXPECT_EQ(running[1].processIdentifier, 77);
}

TEST_F(NSWorkspaceApplicationsTest, ReturnsWholeProcessIdentifiers) {
  doubles::apps = {{"com.microsoft.teams2", 99'998}, {"com.microsoft.teams2", 2'000'000'001}};
  const auto running = workspace.runningApplications();
  ASSERT_EQ(running.size(), 2U);
  EXPECT_EQ(running[0].processIdentifier, 99'998);
  EXPECT_EQ(running[1].processIdentifier, 2'000'000'001);
}

TEST_F(NSWorkspaceApplicationsTest, ReturnsNulloptForAnAbsentBundleIdentifier) {
  doubles::apps = {{"", 77}};
  const auto running = workspace.runningApplications();
  ASSERT_EQ(running.size(), 1U);
  EXPECT_EQ(running[0].bundleIdentifier, std::nullopt);
  EXPECT_EQ(running[0].processIdentifier, 77);
}

TEST_F(NSWorkspaceApplicationsTest, ListsApplicationsThatStartOrQuit) {
  doubles::apps = {{"com.microsoft.teams2", 501, false}, {"com.microsoft.teams", 502, true, true}};
  EXPECT_EQ(workspace.runningApplications().size(), 2U);
}

TEST_F(NSWorkspaceApplicationsTest, ReadsTheListAgainEachTime) {
  doubles::apps = {{"com.microsoft.teams2", 501}};
  EXPECT_EQ(workspace.runningApplications().size(), 1U);
  doubles::apps.clear();
  EXPECT_TRUE(workspace.runningApplications().empty());
}

TEST_F(NSWorkspaceApplicationsTest, ReleasesWhatItReads) {
  doubles::apps = {{"com.microsoft.teams2", 501}, {"", 77}};
  const long before = doubles::liveObjects();
  for (int i = 0; i < 3; ++i) EXPECT_EQ(workspace.runningApplications().size(), 2U);
  EXPECT_EQ(doubles::liveObjects(), before);
}

}  // namespace
}  // namespace hushbox
