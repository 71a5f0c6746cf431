#include "rehearsal/Browser.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "rehearsal/Desk.h"
#include "rehearsal/DeskError.h"
#include "rehearsal/DevToolsPipe.h"

namespace hushbox::rehearsal {
namespace {

using testing::SizeIs;

/// All tests share one headless browser.
class BrowserTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    Desk::Options options;
    options.audio.reset();
    desk_ = std::make_unique<Desk>(options);
  }
  static void TearDownTestSuite() { desk_.reset(); }

  static inline std::unique_ptr<Desk> desk_;
};

TEST_F(BrowserTest, AppearsOnTheAccessibilityBus) {
  MeetingPage meeting(desk_->browser());
  desk_->accessibility().waitForApplication("Chromium");
  meeting.close();
}

TEST_F(BrowserTest, MeetingIsServedUnderATeamsAddress) {
  MeetingPage meeting(desk_->browser());
  const std::string address = meeting.page().evaluate("location.href");
  EXPECT_TRUE(address.starts_with("https://teams.microsoft.com/v2/")) << address;
  EXPECT_EQ(meeting.page().evaluate("isSecureContext"), true);
  // Other requests to that host get 404 and do not leave the machine.
  EXPECT_EQ(meeting.page().evaluate("fetch('/other').then((reply) => reply.status)"), 404);
  meeting.close();
}

TEST_F(BrowserTest, ClickOnTheMicrophoneChangesItsLabelAndIsTimed) {
  MeetingPage meeting(desk_->browser());
  EXPECT_FALSE(meeting.isMuted());
  EXPECT_EQ(meeting.label(), MeetingPage::labelWhenLive);

  const auto before = std::chrono::system_clock::now() - Milliseconds{1};
  meeting.clickMicrophone();
  meeting.waitForLabel(MeetingPage::labelWhenMuted);
  const auto after = std::chrono::system_clock::now() + Milliseconds{1};

  EXPECT_TRUE(meeting.isMuted());
  ASSERT_THAT(meeting.presses(), SizeIs(1));
  EXPECT_GT(meeting.presses().front(), before);
  EXPECT_LT(meeting.presses().front(), after);
  meeting.pressMicrophone();
  meeting.waitForMuted(false);
  EXPECT_THAT(meeting.presses(), SizeIs(2));
  meeting.close();
}

TEST_F(BrowserTest, MeetingCanStartMutedBeStuckAndHaveManyElements) {
  MeetingPage::Options options;
  options.muted = true;
  options.stuck = true;
  options.extraElements = 4000;
  options.microphone = MeetingPage::Control::CheckBox;
  options.title = "Déjà vu & more | Microsoft Teams";
  MeetingPage meeting(desk_->browser(), options);
  EXPECT_EQ(meeting.label(), MeetingPage::labelWhenMuted);
  meeting.clickMicrophone();
  meeting.waitForPresses(1);
  EXPECT_TRUE(meeting.isMuted());
  EXPECT_EQ(meeting.page().evaluate("document.title"), options.title);
  EXPECT_GE(meeting.page().evaluate("document.querySelectorAll('p').length").get<int>(), 1900);
  meeting.close();
}

TEST_F(BrowserTest, LabelCanChangeLateAndTheButtonCanBeRemovedAndAddedAgain) {
  MeetingPage::Options options;
  options.labelDelay = Milliseconds{300};
  MeetingPage meeting(desk_->browser(), options);
  meeting.pressMicrophone();
  EXPECT_TRUE(meeting.isMuted());
  EXPECT_EQ(meeting.label(), MeetingPage::labelWhenLive);
  meeting.waitForLabel(MeetingPage::labelWhenMuted);
  meeting.leaveCall();
  EXPECT_THROW(meeting.label(), DeskError);
  meeting.joinCall();
  EXPECT_EQ(meeting.label(), MeetingPage::labelWhenMuted);
  meeting.close();
}

TEST_F(BrowserTest, MinimisedMeetingIsHiddenUntilItIsRestored) {
  MeetingPage meeting(desk_->browser());
  EXPECT_FALSE(meeting.page().isHidden());
  meeting.page().minimise();
  meeting.pressMicrophone();
  EXPECT_TRUE(meeting.isMuted());
  meeting.page().restore();
  EXPECT_FALSE(meeting.page().isHidden());
  meeting.close();
}

TEST_F(BrowserTest, DecoyInAnotherTabHasItsOwnMuteButton) {
  MeetingPage meeting(desk_->browser());
  const auto decoy = desk_->browser().open(Browser::pageUrl("decoy.html"), WindowKind::Tab);
  decoy->click("#mute-button");
  waitUntil([&] { return decoy->evaluate("decoy.presses") == 1; }, serverTimeout,
            "the decoy's press");
  EXPECT_FALSE(meeting.isMuted());
  decoy->close();
  meeting.close();
}

TEST_F(BrowserTest, FrozenBrowserRepliesToNothingUntilItIsThawed) {
  MeetingPage meeting(desk_->browser());
  desk_->browser().freeze();
  EXPECT_THROW(desk_->browser().pipe()->call("Browser.getVersion", {}, {}, Milliseconds{200}),
               DeskError);
  desk_->browser().thaw();
  EXPECT_FALSE(meeting.isMuted());
  meeting.close();
}

TEST_F(BrowserTest, ThrowsForWhatNeedsADisplayOrAMissingServer) {
  EXPECT_THROW(desk_->browser().open(Browser::pageUrl("decoy.html"), WindowKind::App), DeskError);
  EXPECT_THROW(desk_->display(), DeskError);
  EXPECT_THROW(desk_->audio(), DeskError);
}

TEST_F(BrowserTest, ThrowsAtOnceIfTheBrowserCrashesDuringACall) {
  MeetingPage meeting(desk_->browser());
  const auto crash = [](gpointer browser) -> gboolean {
    static_cast<Browser*>(browser)->kill();
    return G_SOURCE_REMOVE;
  };
  g_timeout_add(50, crash, &desk_->browser());
  const auto before = std::chrono::steady_clock::now();
  EXPECT_THROW(meeting.page().evaluate("new Promise(() => {})"), DeskError);
  EXPECT_LT(std::chrono::steady_clock::now() - before, serverTimeout);
  EXPECT_FALSE(desk_->browser().isRunning());
  EXPECT_THROW(meeting.isMuted(), DeskError);
  TearDownTestSuite();
  SetUpTestSuite();
}

}  // namespace
}  // namespace hushbox::rehearsal
