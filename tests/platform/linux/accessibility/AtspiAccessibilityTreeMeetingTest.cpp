#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <thread>

#include "platform/linux/accessibility/AtspiAccessibilityTree.h"
#include "rehearsal/Desk.h"
#include "tests/platform/linux/fixtures/MeetingLabels.h"
#include "tests/platform/linux/fixtures/TeamsReader.h"

namespace hushbox {
namespace {

using rehearsal::BrowserPage;
using rehearsal::Desk;
using rehearsal::holdsWithin;
using rehearsal::MeetingPage;
using rehearsal::serverTimeout;
using rehearsal::WindowKind;
using testing::ElementsAre;
using testing::SizeIs;

/// A meeting in a real browser without a screen.
class AtspiAccessibilityTreeMeetingTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    Desk::Options options;
    options.audio.reset();
    desk_ = std::make_unique<Desk>(options);
  }
  static void TearDownTestSuite() { desk_.reset(); }

  std::unique_ptr<MeetingPage> meet(MeetingPage::Options options = {}) {
    return std::make_unique<MeetingPage>(desk_->browser(), options);
  }
  std::unique_ptr<BrowserPage> open(const std::string& url, WindowKind kind = WindowKind::Window) {
    return desk_->browser().open(url, kind);
  }
  static std::string titled(const std::string& title, const std::string& body) {
    return "data:text/html,<title>" + title + "</title>" + body;
  }
  testing::AssertionResult reads(const std::string& awaited) {
    std::string last;
    if (holdsWithin([&] { return (last = reader_.read()) == awaited; }, serverTimeout))
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << "read last: " << last;
  }

  /// More than a browser takes to present a page.
  static constexpr std::chrono::milliseconds wakeTime{500};

  static inline std::unique_ptr<Desk> desk_;
  AtspiAccessibilityTree tree_;
  TeamsReader reader_{tree_, tree_.workspace()};
};

TEST_F(AtspiAccessibilityTreeMeetingTest, FindsReadsAndPressesTheButton) {
  const auto meeting = meet();
  ASSERT_TRUE(reads(live));
  EXPECT_EQ(reader_.processIdentifier(), desk_->browser().pid());
  EXPECT_EQ(reader_.text(reader_.button(), "AXRole"), "AXButton");
  EXPECT_EQ(reader_.text(reader_.button(), "AXHelp"), "Mute");
  EXPECT_EQ(reader_.text(reader_.button(), "AXTitle"), std::nullopt);
  for (const char* label : {muted, live, muted}) {
    EXPECT_EQ(reader_.press(), accessibility::success);
    EXPECT_EQ(reader_.read(), label);
  }
  EXPECT_TRUE(meeting->isMuted());
  EXPECT_THAT(meeting->presses(), SizeIs(3));
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, RecognisesAndPressesCheckBoxesAndToggleButtons) {
  const std::pair<MeetingPage::Control, const char*> kinds[] = {
      {MeetingPage::Control::CheckBox, "AXCheckBox"},
      {MeetingPage::Control::ToggleButton, "AXButton"}};
  for (const auto& [control, role] : kinds) {
    MeetingPage::Options options;
    options.microphone = control;
    const auto meeting = meet(options);
    ASSERT_TRUE(reads(live)) << role;
    EXPECT_EQ(reader_.text(reader_.button(), "AXRole"), role);
    EXPECT_EQ(reader_.press(), accessibility::success);
    EXPECT_TRUE(reads(muted));
    EXPECT_TRUE(meeting->isMuted());
    meeting->close();
    ASSERT_TRUE(reads(TeamsReader::notRunning)) << role;
  }
}

TEST_F(AtspiAccessibilityTreeMeetingTest, PresentsNothingOfOtherPagesNorOfTheBrowser) {
  const auto player = open(rehearsal::Browser::pageUrl("decoy.html"));
  const auto meeting = meet();
  const auto behind = open(titled("Song", "<button aria-label='Mute mic'>x</button>"));
  ASSERT_TRUE(reads(live));
  EXPECT_THAT(reader_.controls(),
              ElementsAre("People", "Mute all participants", "Turn camera on (Ctrl+Shift+O)", live,
                          "Leave (Ctrl+Shift+H)"));
  EXPECT_EQ(reader_.press(), accessibility::success);
  meeting->waitForMuted(true);
  EXPECT_EQ(player->evaluate("decoy.presses").get<int>(), 0);
  player->close();
  behind->close();
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, BrowserWithoutAMeetingIsNotTeams) {
  const auto player = open(rehearsal::Browser::pageUrl("decoy.html"));
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
  player->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, PageThatOnlyHasTheTitleDoesNotHideTheMeeting) {
  const auto advertisement =
      open(titled("Meetings and calls | Microsoft Teams", "<button aria-label='Buy'>x</button>"));
  ASSERT_TRUE(reads(TeamsReader::notRunning));
  const auto meeting = meet();
  ASSERT_TRUE(reads(live));
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_TRUE(meeting->isMuted());
  advertisement->close();
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, ForeignPageThatOnlyHasTheTitleIsNeitherReadNorPressed) {
  const auto foreign =
      open(titled("Weekly sync | Microsoft Teams",
                  "<button aria-label='Mute mic' onclick='pressed = true'>x</button>"));
  std::this_thread::sleep_for(AtspiAccessibilityTreeMeetingTest::wakeTime);
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
  EXPECT_NE(reader_.press(), accessibility::success);
  EXPECT_TRUE(foreign->evaluate("typeof pressed === 'undefined'").get<bool>());
  foreign->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, ControlsOfMediaPlayersAreNotOffered) {
  MeetingPage::Options options;
  options.mediaPlayers = true;
  const auto meeting = meet(options);
  ASSERT_TRUE(reads(live));
  EXPECT_THAT(reader_.controls(),
              ElementsAre("People", "Mute all participants", "Turn camera on (Ctrl+Shift+O)", live,
                          "Leave (Ctrl+Shift+H)"));
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_TRUE(meeting->isMuted());
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, ReadsAndPressesAMeetingInABackgroundTab) {
  const auto meeting = meet();
  ASSERT_TRUE(reads(live));
  const auto front = open(rehearsal::Browser::pageUrl("decoy.html"), WindowKind::Tab);
  ASSERT_TRUE(holdsWithin([&] { return meeting->page().isHidden(); }, serverTimeout));
  for (const bool wanted : {true, false, true}) {
    meeting->pressMicrophone();
    EXPECT_TRUE(reads(wanted ? muted : live));
  }
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_TRUE(reads(live));
  EXPECT_FALSE(meeting->isMuted());
  // A new search finds it too: the document is remembered, not only the button.
  TeamsReader another(tree_, tree_.workspace());
  EXPECT_EQ(another.read(), live);
  front->close();
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, FindsTheButtonAgainAfterAReload) {
  const auto meeting = meet();
  ASSERT_TRUE(reads(live));
  const auto before = reader_.button();
  meeting->page().evaluate("location.reload()");
  ASSERT_TRUE(holdsWithin([&] { return reader_.read() == live && reader_.button() != before; },
                          serverTimeout));
  AttributeValue value;
  EXPECT_EQ(tree_.copyAttributeValue(before, "AXRole", value), accessibility::invalidElement);
  EXPECT_EQ(tree_.performAction(before, "AXPress"), accessibility::invalidElement);
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_TRUE(reads(muted));
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, SeesTheCallEndAndTheMeetingClose) {
  const auto meeting = meet();
  ASSERT_TRUE(reads(live));
  meeting->leaveCall();
  EXPECT_TRUE(reads(TeamsReader::noMeeting));
  meeting->joinCall();
  EXPECT_TRUE(reads(live));
  meeting->close();
  EXPECT_TRUE(reads(TeamsReader::notRunning));
}

TEST_F(AtspiAccessibilityTreeMeetingTest, PressThatChangesNothingSucceeds) {
  MeetingPage::Options options;
  options.stuck = true;
  const auto meeting = meet(options);
  ASSERT_TRUE(reads(live));
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_TRUE(reads(live));
  EXPECT_THAT(meeting->presses(), SizeIs(1));
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, PollWithTheKnownButtonTakesAtMostTwelveCalls) {
  const auto meeting = meet();
  ASSERT_TRUE(reads(live));
  const auto before = tree_.callCount();
  EXPECT_EQ(reader_.read(), live);
  EXPECT_LE(tree_.callCount() - before, 12U);
  EXPECT_EQ(reader_.visits(), 0);
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, FortyThousandElementsCostNoMoreCallsThanFew) {
  MeetingPage::Options options;
  options.extraElements = 40'000;
  const auto meeting = meet(options);
  ASSERT_TRUE(reads(live));
  // A new reader has to search and walk again.
  TeamsReader another(tree_, tree_.workspace());
  const auto beforeWalk = tree_.callCount();
  EXPECT_EQ(another.read(), live);
  // A walk of the page would take tens of thousands.
  EXPECT_LE(tree_.callCount() - beforeWalk, 40U);
  EXPECT_LT(another.visits(), 10);
  const auto beforePoll = tree_.callCount();
  EXPECT_EQ(another.read(), live);
  EXPECT_LE(tree_.callCount() - beforePoll, 12U);
  EXPECT_EQ(another.press(), accessibility::success);
  EXPECT_EQ(another.read(), muted);
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, SeveralTreesWorkOneAfterAnother) {
  const auto meeting = meet();
  for (int i = 0; i < 3; ++i) {
    AtspiAccessibilityTree tree;
    TeamsReader reader(tree, tree.workspace());
    ASSERT_TRUE(holdsWithin([&] { return reader.read() == live; }, serverTimeout));
  }
  meeting->close();
}

TEST_F(AtspiAccessibilityTreeMeetingTest, ElementsOfAnotherTreeAreInvalid) {
  const auto meeting = meet();
  ASSERT_TRUE(reads(live));
  AccessibilityElementRef ofAnother;
  {
    AtspiAccessibilityTree another;
    ofAnother = another.createApplication(reader_.processIdentifier());
    AttributeValue value;
    EXPECT_EQ(another.copyAttributeValue(reader_.button(), "AXRole", value),
              accessibility::invalidElement);
    EXPECT_EQ(another.performAction(reader_.button(), "AXPress"), accessibility::invalidElement);
  }
  AttributeValue value;
  EXPECT_EQ(tree_.copyAttributeValue(ofAnother, "AXRole", value), accessibility::invalidElement);
  EXPECT_EQ(tree_.setMessagingTimeout(ofAnother, 1), accessibility::invalidElement);
  EXPECT_EQ(tree_.setAttributeValue(ofAnother, "AXManualAccessibility", true),
            accessibility::invalidElement);
  EXPECT_FALSE(meeting->isMuted());
  meeting->close();
}

/// In a browser of its own: every further page costs the first look two calls.
TEST(AtspiAccessibilityTreeCallsTest, CallsPerOperationDoNotGrow) {
  Desk::Options options;
  options.audio.reset();
  Desk desk(options);
  MeetingPage meeting(desk.browser());
  {
    // Wakes the browser up.
    AtspiAccessibilityTree first;
    TeamsReader reader(first, first.workspace());
    ASSERT_TRUE(holdsWithin([&] { return reader.read() == live; }, serverTimeout));
  }
  AtspiAccessibilityTree tree;
  TeamsReader reader(tree, tree.workspace());
  const auto callsOf = [&](const std::function<void()>& operation) {
    const auto before = tree.callCount();
    operation();
    return tree.callCount() - before;
  };
  EXPECT_LE(callsOf([&] { EXPECT_EQ(reader.read(), live); }), 29U);
  EXPECT_EQ(reader.read(), live);
  EXPECT_LE(callsOf([&] { EXPECT_EQ(reader.read(), live); }), 7U);
  // Besides these, a press looks for the changed label every 8 ms, two calls each time.
  EXPECT_LE(callsOf([&] {
              EXPECT_EQ(reader.read(), live);
              EXPECT_EQ(reader.press(), accessibility::success);
            }),
            16U + 4U);
}

}  // namespace
}  // namespace hushbox
