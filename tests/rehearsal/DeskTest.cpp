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

TEST(DeskTest, LeavesNoProcessFolderOrVariableBehind) {
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
    // Includes the browser's renderers and helpers, which are children and grandchildren.
    EXPECT_GE(processes.size(), 15U);
    EXPECT_TRUE(std::filesystem::exists(folder));
    EXPECT_EQ(variable("HOME"), (folder / "home").string());
    EXPECT_EQ(variable("DBUS_SESSION_BUS_ADDRESS"), desk.session().busAddress());
  }
  for (const pid_t process : processes) {
    EXPECT_TRUE(holdsWithin([&] { return isGone(process); }, serverTimeout)) << process;
  }
  EXPECT_FALSE(std::filesystem::exists(folder));
  EXPECT_EQ(variable("HOME"), home);
  EXPECT_EQ(variable("DBUS_SESSION_BUS_ADDRESS"), bus);
}

TEST(DeskTest, AProcessCanHaveSeveralDesksInTurn) {
  for (const bool speakerphone : {true, false, true}) {
    Desk::Options options;
    options.browser = false;
    options.speakerphone = speakerphone;
    Desk desk(options);
    EXPECT_EQ(desk.audio().hasSpeakerphone(), speakerphone);
    EXPECT_TRUE(desk.accessibility().isEnabled());
  }
}

TEST(DeskTest, AccessibilityBusCanBeRestartedAfterACrash) {
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

}  // namespace
}  // namespace hushbox::rehearsal
