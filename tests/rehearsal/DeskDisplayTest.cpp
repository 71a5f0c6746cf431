#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "rehearsal/BusConnection.h"
#include "rehearsal/Desk.h"
#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {
namespace {

using testing::SizeIs;

/// A desk with a display, real browser windows and a notification daemon.
class DeskDisplayTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    Desk::Options options;
    options.display = true;
    options.headlessBrowser = false;
    options.notifications = true;
    options.audio.reset();
    desk_ = std::make_unique<Desk>(options);
  }
  static void TearDownTestSuite() { desk_.reset(); }

  static inline std::unique_ptr<Desk> desk_;
};

TEST_F(DeskDisplayTest, CoveredMeetingIsHiddenUntilItIsUncovered) {
  MeetingPage::Options options;
  options.window = WindowKind::App;
  MeetingPage meeting(desk_->browser(), options);
  const auto above = meeting.page().cover();
  EXPECT_TRUE(meeting.page().isHidden());
  above->close();
  EXPECT_TRUE(holdsWithin([&] { return !meeting.page().isHidden(); }, serverTimeout));
  meeting.page().minimise();
  meeting.page().restore();
  meeting.clickMicrophone();
  meeting.waitForMuted(true);
  meeting.close();
}

TEST_F(DeskDisplayTest, ScreenshotShowsTheMeeting) {
  const std::filesystem::path empty = desk_->session().folder() / "empty.png";
  const std::filesystem::path full = desk_->session().folder() / "full.png";
  desk_->display().screenshot(empty);
  MeetingPage meeting(desk_->browser());
  meeting.waitForLabel(MeetingPage::labelWhenLive);
  // The picture of a blank screen is a far smaller file. The page may be drawn a moment later.
  const auto drawn = [&] {
    desk_->display().screenshot(full);
    return std::filesystem::file_size(full) > 5 * std::filesystem::file_size(empty);
  };
  EXPECT_TRUE(holdsWithin(drawn, serverTimeout));
  meeting.close();
}

TEST_F(DeskDisplayTest, NotificationIsShownAfterTheDaemonIsThawed) {
  const BusConnection bus(desk_->session().busAddress());
  const auto notify = [&](const char* title, Milliseconds deadline) {
    bus.call(
        "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
        "org.freedesktop.Notifications", "Notify",
        g_variant_new("(susssasa{sv}i)", "Hushbox", 0, "", title, "29 %", nullptr, nullptr, -1),
        deadline);
  };
  notify("Low battery", serverTimeout);
  const auto shown = desk_->notifications().waitForShown(1);
  EXPECT_EQ(shown[0].title, "Low battery");
  EXPECT_NE(shown[0].id, 0U);

  desk_->notificationDaemon().freeze();
  EXPECT_THROW(notify("Later", Milliseconds{100}), DeskError);
  EXPECT_THAT(desk_->notifications().shown(), SizeIs(1));
  desk_->notificationDaemon().thaw();
  EXPECT_EQ(desk_->notifications().waitForShown(2)[1].title, "Later");
}

}  // namespace
}  // namespace hushbox::rehearsal
