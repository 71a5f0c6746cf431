#include "platform/linux/accessibility/CompositingManager.h"

#include <gtest/gtest.h>

#include <chrono>

#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::serverTimeout;
using rehearsal::Session;

TEST(CompositingManagerTest, IsSeenToStartAndExit) {
  Session session({.display = true});
  session.applyToThisProcess();
  CompositingManager manager;
  EXPECT_FALSE(manager.isRunning());
  {
    const auto process = session.start("xcompmgr.log", {"xcompmgr"});
    EXPECT_TRUE(holdsWithin([&] { return manager.isRunning(); }, serverTimeout));
  }
  EXPECT_TRUE(holdsWithin([&] { return !manager.isRunning(); }, serverTimeout));
}

TEST(CompositingManagerTest, CountsAsAbsentOnWayland) {
  Session session({.display = true});
  session.applyToThisProcess();
  const auto process = session.start("xcompmgr.log", {"xcompmgr"});
  CompositingManager manager;
  ASSERT_TRUE(holdsWithin([&] { return manager.isRunning(); }, serverTimeout));
  ScopedEnvironment environment;
  environment.set("WAYLAND_DISPLAY", "wayland-0");
  EXPECT_FALSE(manager.isRunning());
}

TEST(CompositingManagerTest, IsAbsentWithoutADisplay) {
  ScopedEnvironment environment;
  environment.set("WAYLAND_DISPLAY", std::nullopt);
  environment.set("DISPLAY", std::nullopt);
  EXPECT_FALSE(CompositingManager().isRunning());
  environment.set("DISPLAY", ":4711");
  EXPECT_FALSE(CompositingManager().isRunning());
}

TEST(CompositingManagerTest, IsAbsentOnceTheDisplayIsClosed) {
  CompositingManager manager;
  {
    Session session({.display = true});
    session.applyToThisProcess();
    EXPECT_FALSE(manager.isRunning());
    const auto process = session.start("xcompmgr.log", {"xcompmgr"});
    EXPECT_TRUE(holdsWithin([&] { return manager.isRunning(); }, serverTimeout));
  }
  EXPECT_FALSE(manager.isRunning());
}

}  // namespace
}  // namespace hushbox
