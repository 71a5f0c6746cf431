#include "platform/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {
namespace {

using testing::ElementsAre;

Platform platformOf(SimulatedDesk& desk) {
  return {
      desk.loop,          desk.audio,     desk.accessibility, desk.workspace, desk.childProcesses,
      desk.notifications, desk.loginItem, desk.menuBar,       desk.log,       desk.locale};
}

TEST(PlatformDeathTest, AbortsWithoutAPlatformInScope) {
  EXPECT_DEATH(platform(), "^hushbox: No platform is in scope\\.\n$");
}

TEST(PlatformDeathTest, SecondPlatformInScopeAborts) {
  SimulatedDesk desk;
  EXPECT_DEATH(PlatformScope second(platformOf(desk)),
               "^hushbox: A platform is in scope already\\.\n$");
}

TEST(PlatformDeathTest, PlatformIsOutOfScopeOnceItsScopeHasClosed) {
  SimulatedDesk desk;
  platform();
  desk.close();
  EXPECT_DEATH(platform(), "No platform is in scope");
}

TEST(PlatformTest, ReturnsThePlatformInScope) {
  SimulatedDesk desk;
  const Platform& inScope = platform();
  EXPECT_EQ(&inScope.mainLoop, &desk.loop);
  EXPECT_EQ(&inScope.audio, &desk.audio);
  EXPECT_EQ(&inScope.accessibility, &desk.accessibility);
  EXPECT_EQ(&inScope.workspace, &desk.workspace);
  EXPECT_EQ(&inScope.childProcesses, &desk.childProcesses);
  EXPECT_EQ(&inScope.notifications, &desk.notifications);
  EXPECT_EQ(&inScope.loginItem, &desk.loginItem);
  EXPECT_EQ(&inScope.menuBar, &desk.menuBar);
  EXPECT_EQ(&inScope.log, &desk.log);
  EXPECT_EQ(&inScope.locale, &desk.locale);
}

TEST(PlatformTest, AnotherScopeMayFollowTheFirst) {
  SimulatedDesk desk;
  desk.close();
  {
    const PlatformScope scope(platformOf(desk));
    EXPECT_EQ(&platform().mainLoop, &desk.loop);
  }
  const PlatformScope again(platformOf(desk));
  EXPECT_EQ(&platform().mainLoop, &desk.loop);
}

TEST(PlatformTest, CloseActionsRunOnceInOrder) {
  SimulatedDesk desk;
  desk.close();
  std::vector<std::string> ran;
  {
    const PlatformScope scope(platformOf(desk));
    PlatformScope::atClose([&] {
      ran.push_back("first");
      // Still in scope.
      EXPECT_EQ(&platform().mainLoop, &desk.loop);
    });
    PlatformScope::atClose([&] { ran.push_back("second"); });
    EXPECT_TRUE(ran.empty());
  }
  EXPECT_THAT(ran, ElementsAre("first", "second"));
  { const PlatformScope scope(platformOf(desk)); }
  EXPECT_EQ(ran.size(), 2U);
}

}  // namespace
}  // namespace hushbox
