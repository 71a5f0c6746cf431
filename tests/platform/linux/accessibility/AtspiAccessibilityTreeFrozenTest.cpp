#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <string>

#include "rehearsal/Desk.h"
#include "tests/platform/linux/fixtures/AccessibleProgramsFixture.h"
#include "tests/platform/linux/fixtures/MeetingLabels.h"

namespace hushbox {
namespace {

using rehearsal::Desk;
using rehearsal::holdsWithin;
using rehearsal::MeetingPage;
using rehearsal::serverTimeout;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds timeout{1000};
/// What a busy machine may add to a timeout.
constexpr milliseconds slack{1500};

milliseconds spentOn(const std::function<void()>& action) {
  const auto before = steady_clock::now();
  action();
  return std::chrono::ceil<milliseconds>(steady_clock::now() - before);
}

TEST(AtspiAccessibilityTreeFrozenTest, CostsOneTimeoutAndRecoversAfterTheThaw) {
  Desk::Options options;
  options.audio.reset();
  Desk desk(options);
  MeetingPage meeting(desk.browser());
  AtspiAccessibilityTree tree;
  TeamsReader reader(tree, tree.workspace());
  ASSERT_TRUE(holdsWithin([&] { return reader.read() == live; }, serverTimeout));

  desk.browser().freeze();
  // It stays listed: the meeting is not found, but Teams is.
  EXPECT_LT(spentOn([&] { EXPECT_EQ(reader.read(), TeamsReader::noMeeting); }), timeout + slack);
  for (int i = 0; i < 5; ++i)
    EXPECT_LT(spentOn([&] { EXPECT_EQ(reader.read(), TeamsReader::noMeeting); }), timeout / 2);

  desk.browser().thaw();
  EXPECT_TRUE(holdsWithin([&] { return reader.read() == live; }, serverTimeout));
  EXPECT_EQ(reader.press(), accessibility::success);
  EXPECT_EQ(reader.read(), muted);
  EXPECT_TRUE(meeting.isMuted());
}

TEST(AtspiAccessibilityTreeFrozenTest, PressFailsAfterOneTimeout) {
  Desk::Options options;
  options.audio.reset();
  Desk desk(options);
  MeetingPage meeting(desk.browser());
  AtspiAccessibilityTree tree;
  TeamsReader reader(tree, tree.workspace());
  ASSERT_TRUE(holdsWithin([&] { return reader.read() == live; }, serverTimeout));
  desk.browser().freeze();
  EXPECT_LT(spentOn([&] { EXPECT_EQ(reader.press(), accessibility::cannotComplete); }),
            timeout + slack);
  desk.browser().thaw();
  // It was asked for its actions, but not to perform one.
  EXPECT_TRUE(holdsWithin([&] { return reader.read() == live; }, serverTimeout));
  EXPECT_TRUE(meeting.presses().empty());
}

/// Other programs beside the meeting.
using AtspiAccessibilityTreeFrozenNeighbourTest = AccessibleProgramsFixture;

TEST_F(AtspiAccessibilityTreeFrozenNeighbourTest, CostsOneTimeoutIfFrozenBeforeItWasMet) {
  const auto frozen = program("Other browser", "Chromium");
  frozen->freeze();
  const auto teams = meeting();
  EXPECT_LT(spentOn([&] { EXPECT_EQ(reader_.read(), live); }), timeout + slack);
  for (int i = 0; i < 3; ++i) {
    TeamsReader searching(tree_, tree_.workspace());
    EXPECT_LT(spentOn([&] { EXPECT_EQ(searching.read(), live); }), timeout / 2);
  }
}

TEST_F(AtspiAccessibilityTreeFrozenNeighbourTest, LeavesTheBrowserItsTime) {
  const auto stopped = program("Terminal", "gtk");
  stopped->freeze();
  const auto teams = meeting();
  teams->setReplyDelay(milliseconds{80});
  EXPECT_EQ(reader_.read(), live);
}

TEST_F(AtspiAccessibilityTreeFrozenNeighbourTest, CostsOneTimeoutIfFrozenLater) {
  const auto frozen = program("Other browser", "Chromium");
  const auto teams = meeting();
  ASSERT_TRUE(reads(reader_, live));
  frozen->freeze();
  // While the button is known, no other program is asked.
  EXPECT_LT(spentOn([&] { EXPECT_EQ(reader_.read(), live); }), timeout / 2);
  std::string read;
  for (int attempt = 0; attempt < 5 && read != live; ++attempt) {
    if (attempt > 0) {
      // What was left of the time did not suffice on a busy machine.
      frozen->thaw();
      ASSERT_TRUE(holdsWithin([&] { return !frozen->keepsCallsWaiting(); }, serverTimeout));
      TeamsReader met(tree_, tree_.workspace());
      ASSERT_TRUE(reads(met, live));
      frozen->freeze();
    }
    TeamsReader first(tree_, tree_.workspace());
    EXPECT_LT(spentOn([&] { read = first.read(); }), timeout + slack);
  }
  EXPECT_EQ(read, live);
  TeamsReader second(tree_, tree_.workspace());
  EXPECT_LT(spentOn([&] { EXPECT_EQ(second.read(), live); }), timeout / 2);
}

TEST_F(AtspiAccessibilityTreeFrozenNeighbourTest, IsMetAfterTheThaw) {
  const auto teams = meeting();
  teams->freeze();
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
  teams->thaw();
  EXPECT_TRUE(holdsWithin([&] { return reader_.read() == live; }, serverTimeout));
}

TEST_F(AtspiAccessibilityTreeFrozenNeighbourTest, SeveralCostOneTimeoutTogether) {
  const auto met = program("Met", "Chromium");
  const auto teams = meeting();
  ASSERT_TRUE(reads(reader_, live));
  const auto unmet = program("Unmet", "Gecko");
  met->freeze();
  unmet->freeze();
  teams->freeze();
  TeamsReader searching(tree_, tree_.workspace());
  EXPECT_LT(spentOn([&] { EXPECT_EQ(searching.read(), TeamsReader::noMeeting); }), timeout + slack);
}

TEST_F(AtspiAccessibilityTreeFrozenNeighbourTest, IsNoLongerTeamsAfterExitingWhileFrozen) {
  auto teams = meeting();
  ASSERT_TRUE(reads(reader_, live));
  teams->freeze();
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
  teams.reset();
  EXPECT_TRUE(
      holdsWithin([&] { return reader_.read() == TeamsReader::notRunning; }, serverTimeout));
}

}  // namespace
}  // namespace hushbox
