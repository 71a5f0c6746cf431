// The program's own main on the doubles.

#include <gmock/gmock.h>

#include "tests/platform/macos/ProgramOnMac.h"

/// The main of main.mm: see MainName.h.
extern "C" int hushboxMain();

namespace hushbox {
namespace {

using namespace std::chrono_literals;

class HushboxProgramTest : public MacFixture {
 protected:
  /// Runs `block` on the main thread after `delay`.
  static void after(TimeInterval delay, std::function<void()> block) {
    RunLoopMainLoop().mainAsyncAfter(delay, WorkItem(std::move(block)));
  }
};

TEST_F(HushboxProgramTest, RunsAsAnAgentUntilTheUserQuits) {
  setBattery(62);
  after(2s, [] {
    EXPECT_TRUE(doubles::isAgent());
    EXPECT_EQ(doubles::statusItemCount(), 1U);
    EXPECT_FALSE(doubles::isTerminated());
    const auto items = doubles::menuItems();
    ASSERT_FALSE(items.empty());
    EXPECT_EQ(items.back().title, "Quit Hushbox");
    EXPECT_EQ(items.back().keyEquivalent, "q");
    EXPECT_TRUE(items.back().actionable);
    doubles::chooseMenuItem("Quit Hushbox");
  });
  EXPECT_EQ(hushboxMain(), 0);
  EXPECT_TRUE(doubles::isTerminated());
}

TEST_F(HushboxProgramTest, SecondStartSaysSoAndReturnsZero) {
  doubles::apps = {{"com.example.hushbox", 1}};
  testing::internal::CaptureStderr();
  EXPECT_EQ(hushboxMain(), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Hushbox is running in this session already.\n");
  EXPECT_EQ(doubles::statusItemCount(), 0U);
  EXPECT_EQ(doubles::timerCount(), 0U);
}

TEST_F(HushboxProgramTest, WorksOutsideABundleAndLogsIt) {
  doubles::setBundleIdentifier(std::nullopt);
  setBattery(62);
  after(1s, [] { doubles::chooseMenuItem("Quit Hushbox"); });
  EXPECT_EQ(hushboxMain(), 0);
  std::vector<std::string> lines;
  for (const auto& record : doubles::logRecords())
    if (record.category == "notify") lines.push_back(record.text);
  EXPECT_THAT(lines, testing::ElementsAre(testing::HasSubstr("outside its application bundle")));
}

}  // namespace
}  // namespace hushbox
