#include "rehearsal/Desk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "rehearsal/BusConnection.h"
#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {
namespace {

using testing::Contains;
using testing::SizeIs;

bool isGone(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string number, name;
  char state = 'Z';
  file >> number >> name >> state;
  return state == 'Z';
}

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "(unset)";
}

TEST(Desk, LeavesNoProcessNoFolderAndNoVariableBehind) {
  const std::string home = variable("HOME");
  const std::string bus = variable("DBUS_SESSION_BUS_ADDRESS");
  std::vector<pid_t> processes;
  std::filesystem::path folder;
  {
    Desk::Options options;
    options.display = true;
    options.notifications = true;
    options.systemBus = true;
    options.speakerphone = true;
    Desk desk(options);
    MeetingPage meeting(desk.browser());
    desk.accessibility().waitForApplication("Chromium");
    processes = desk.session().processes();
    folder = desk.session().folder();
    EXPECT_THAT(processes, Contains(desk.browser().pid()));
    // The browser's renderers and helpers are its children and grandchildren.
    EXPECT_GE(processes.size(), 15U);
    EXPECT_TRUE(std::filesystem::exists(folder));
    EXPECT_EQ(variable("HOME"), (folder / "home").string());
    EXPECT_EQ(variable("DBUS_SESSION_BUS_ADDRESS"), desk.session().busAddress());
  }
  for (const pid_t process : processes) {
    EXPECT_TRUE(holdsWithin([&] { return isGone(process); }, patience)) << process;
  }
  EXPECT_FALSE(std::filesystem::exists(folder));
  EXPECT_EQ(variable("HOME"), home);
  EXPECT_EQ(variable("DBUS_SESSION_BUS_ADDRESS"), bus);
}

TEST(Session, EndsEvenWhatHasLeftItsProcessGroup) {
  std::vector<pid_t> strays;
  {
    const Session session;
    const std::size_t before = session.processes().size();
    const auto launcher = session.start("stray.log", {"setsid", "--fork", "sleep", "1000"});
    waitUntil([&] { return !launcher->isRunning() && session.processes().size() > before; },
              patience, "a stray");
    strays = session.processes();
  }
  for (const pid_t stray : strays) EXPECT_TRUE(isGone(stray)) << stray;
}

TEST(Desk, SeveralFollowOneAnotherInOneProcess) {
  for (const bool speakerphone : {true, false, true}) {
    Desk::Options options;
    options.browser = false;
    options.speakerphone = speakerphone;
    Desk desk(options);
    EXPECT_EQ(desk.audio().hasSpeakerphone(), speakerphone);
    EXPECT_TRUE(desk.accessibility().isEnabled());
  }
}

TEST(Desk, TheAccessibilityBusComesBackAfterACrash) {
  Desk::Options options;
  options.browser = false;
  options.audio.reset();
  Desk desk(options);
  const std::string before = desk.accessibility().address();
  { BusConnection reachable(before); }
  desk.accessibility().kill();
  EXPECT_THROW(BusConnection{before}, DeskError);
  desk.accessibility().setEnabled(true);
  BusConnection reachable(desk.accessibility().address());
}

/// A desk with a display: real windows, a notification daemon.
class DeskWithDisplay : public testing::Test {
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

TEST_F(DeskWithDisplay, ACoveredMeetingIsHiddenUntilTheCoverGoes) {
  MeetingPage::Options options;
  options.window = WindowKind::App;
  MeetingPage meeting(desk_->browser(), options);
  const auto above = meeting.page().cover();
  EXPECT_TRUE(meeting.page().isHidden());
  above->close();
  EXPECT_TRUE(holdsWithin([&] { return !meeting.page().isHidden(); }, patience));
  meeting.page().minimise();
  meeting.page().restore();
  meeting.clickMicrophone();
  meeting.waitForMuted(true);
  meeting.close();
}

TEST_F(DeskWithDisplay, AScreenshotShowsTheMeeting) {
  const std::filesystem::path empty = desk_->session().folder() / "empty.png";
  const std::filesystem::path full = desk_->session().folder() / "full.png";
  desk_->display().screenshot(empty);
  MeetingPage meeting(desk_->browser());
  meeting.waitForLabel(MeetingPage::labelWhenLive);
  // A blank screen is far smaller a file than a drawn one; the drawing may come a moment later.
  const auto drawn = [&] {
    desk_->display().screenshot(full);
    return std::filesystem::file_size(full) > 5 * std::filesystem::file_size(empty);
  };
  EXPECT_TRUE(holdsWithin(drawn, patience));
  meeting.close();
}

TEST_F(DeskWithDisplay, ANotificationIsShownOnceTheDaemonCanAnswer) {
  const BusConnection bus(desk_->session().busAddress());
  const auto notify = [&](const char* title, Milliseconds deadline) {
    bus.call(
        "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
        "org.freedesktop.Notifications", "Notify",
        g_variant_new("(susssasa{sv}i)", "Hushbox", 0, "", title, "29 %", nullptr, nullptr, -1),
        deadline);
  };
  notify("Low battery", patience);
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
