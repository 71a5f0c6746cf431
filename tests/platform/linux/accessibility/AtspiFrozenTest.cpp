#include <gmock/gmock.h>

#include <chrono>
#include <memory>

#include "platform/linux/accessibility/AtspiAccessibilityTree.h"
#include "rehearsal/AccessibilityBus.h"
#include "rehearsal/Desk.h"
#include "rehearsal/Session.h"
#include "tests/platform/linux/fixtures/AccessibleProgram.h"
#include "tests/platform/linux/fixtures/TeamsReader.h"

namespace hushbox {
namespace {

using rehearsal::Desk;
using rehearsal::holdsWithin;
using rehearsal::MeetingPage;
using rehearsal::patience;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr const char* live = MeetingPage::labelWhenLive;
constexpr const char* muted = MeetingPage::labelWhenMuted;
constexpr milliseconds timeout{1000};
/// What a loaded machine may add to a time-out.
constexpr milliseconds slack{1500};

milliseconds spentOn(const std::function<void()>& action) {
  const auto before = steady_clock::now();
  action();
  return std::chrono::ceil<milliseconds>(steady_clock::now() - before);
}

TEST(AtspiFrozenBrowser, CostsOneTimeOutAndComesBackWhenItThaws) {
  Desk::Options options;
  options.audio.reset();
  Desk desk(options);
  MeetingPage meeting(desk.browser());
  AtspiAccessibilityTree tree;
  TeamsReader reader(tree, tree.workspace());
  ASSERT_TRUE(holdsWithin([&] { return reader.read() == live; }, patience));

  desk.browser().freeze();
  // It stays listed, so that it is the meeting that is not found, not Teams.
  EXPECT_LT(spentOn([&] { EXPECT_EQ(reader.read(), TeamsReader::noMeeting); }), timeout + slack);
  for (int i = 0; i < 5; ++i)
    EXPECT_LT(spentOn([&] { EXPECT_EQ(reader.read(), TeamsReader::noMeeting); }), timeout / 2);

  desk.browser().thaw();
  EXPECT_TRUE(holdsWithin([&] { return reader.read() == live; }, patience));
  EXPECT_EQ(reader.press(), accessibility::success);
  EXPECT_EQ(reader.read(), muted);
  EXPECT_TRUE(meeting.isMuted());
}

TEST(AtspiFrozenBrowser, PressOnItFailsAfterOneTimeOut) {
  Desk::Options options;
  options.audio.reset();
  Desk desk(options);
  MeetingPage meeting(desk.browser());
  AtspiAccessibilityTree tree;
  TeamsReader reader(tree, tree.workspace());
  ASSERT_TRUE(holdsWithin([&] { return reader.read() == live; }, patience));
  desk.browser().freeze();
  EXPECT_LT(spentOn([&] { EXPECT_EQ(reader.press(), accessibility::cannotComplete); }),
            timeout + slack);
  desk.browser().thaw();
  // It was asked what it can do, and not told to do it.
  EXPECT_TRUE(holdsWithin([&] { return reader.read() == live; }, patience));
  EXPECT_TRUE(meeting.presses().empty());
}

/// Programs beside the meeting, made of data.
class AtspiFrozenNeighbour : public testing::Test {
 protected:
  AtspiFrozenNeighbour() {
    session_.applyToThisProcess();
    accessibility_.setEnabled(true);
    address_ = accessibility_.address();
  }

  std::unique_ptr<AccessibleProgram> program(const std::string& name, const std::string& toolkit) {
    return std::make_unique<AccessibleProgram>(address_, name, toolkit);
  }
  std::unique_ptr<AccessibleProgram> meeting() {
    auto result = program("Browser", "Gecko");
    result->put("/button", {.role = 43,
                            .name = live,
                            .attributes = {{"id", "microphone-button"}},
                            .actions = {"press"}});
    result->put("/document", {.role = 95,
                              .documentAttributes = {{"DocURL", "https://teams.microsoft.com/v2/"}},
                              .children = {"/button"}});
    result->put(AccessibleProgram::root, {.role = 75, .children = {"/document"}});
    return result;
  }

  rehearsal::Session session_;
  rehearsal::AccessibilityBus accessibility_{session_};
  std::string address_;
  AtspiAccessibilityTree tree_;
  TeamsReader reader_{tree_, tree_.workspace()};
};

TEST_F(AtspiFrozenNeighbour, FrozenBeforeItWasMetCostsOneTimeOutInAll) {
  const auto frozen = program("Other browser", "Chromium");
  frozen->freeze();
  const auto teams = meeting();
  EXPECT_LT(spentOn([&] { EXPECT_EQ(reader_.read(), live); }), timeout + slack);
  for (int i = 0; i < 3; ++i) {
    TeamsReader searching(tree_, tree_.workspace());
    EXPECT_LT(spentOn([&] { EXPECT_EQ(searching.read(), live); }), timeout / 2);
  }
}

TEST_F(AtspiFrozenNeighbour, FrozenLaterCostsOneTimeOutInAll) {
  const auto frozen = program("Other browser", "Chromium");
  const auto teams = meeting();
  ASSERT_EQ(reader_.read(), live);
  frozen->freeze();
  // With the known button nobody else is asked.
  EXPECT_LT(spentOn([&] { EXPECT_EQ(reader_.read(), live); }), timeout / 2);
  TeamsReader first(tree_, tree_.workspace());
  EXPECT_LT(spentOn([&] { EXPECT_EQ(first.read(), live); }), timeout + slack);
  TeamsReader second(tree_, tree_.workspace());
  EXPECT_LT(spentOn([&] { EXPECT_EQ(second.read(), live); }), timeout / 2);
}

TEST_F(AtspiFrozenNeighbour, OneThatWasFrozenIsMetWhenItThaws) {
  const auto teams = meeting();
  teams->freeze();
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
  teams->thaw();
  EXPECT_TRUE(holdsWithin([&] { return reader_.read() == live; }, patience));
}

TEST_F(AtspiFrozenNeighbour, SeveralFrozenOnesCostOneTimeOutTogether) {
  const auto met = program("Met", "Chromium");
  const auto teams = meeting();
  ASSERT_EQ(reader_.read(), live);
  const auto unmet = program("Unmet", "Gecko");
  met->freeze();
  unmet->freeze();
  teams->freeze();
  TeamsReader searching(tree_, tree_.workspace());
  EXPECT_LT(spentOn([&] { EXPECT_EQ(searching.read(), TeamsReader::noMeeting); }), timeout + slack);
}

TEST_F(AtspiFrozenNeighbour, OneThatEndsWhileFrozenIsNotTeamsAnyMore) {
  auto teams = meeting();
  ASSERT_EQ(reader_.read(), live);
  teams->freeze();
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
  teams.reset();
  EXPECT_TRUE(holdsWithin([&] { return reader_.read() == TeamsReader::notRunning; }, patience));
}

}  // namespace
}  // namespace hushbox
