#include "platform/linux/accessibility/AtspiBus.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>

#include "platform/linux/accessibility/AtspiAccessibilityTree.h"
#include "rehearsal/AccessibilityBus.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/AccessibleProgram.h"
#include "tests/platform/linux/fixtures/StoppedProcess.h"
#include "tests/platform/linux/fixtures/TeamsReader.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::serverTimeout;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

class AtspiBusTest : public testing::Test {
 protected:
  AtspiBusTest() { session_.applyToThisProcess(); }

  bool launcherRuns() const {
    return rehearsal::BusConnection(session_.busAddress()).hasOwner("org.a11y.Bus");
  }

  /// The process of org.a11y.Bus, which has the switch.
  int launcher() const {
    return rehearsal::BusConnection(session_.busAddress()).processOf("org.a11y.Bus");
  }
  /// The daemon of the accessibility bus.
  int daemon() const {
    return rehearsal::BusConnection(accessibility_.address()).processOf("org.freedesktop.DBus");
  }

  rehearsal::Session session_;
  rehearsal::AccessibilityBus accessibility_{session_};
  AtspiAccessibilityTree tree_;
};

TEST_F(AtspiBusTest, LooksWithoutStartingAProgram) {
  EXPECT_FALSE(tree_.isProcessTrusted());
  EXPECT_FALSE(tree_.isProcessTrustedWithOptions(false));
  EXPECT_TRUE(tree_.workspace().runningApplications().empty());
  EXPECT_FALSE(launcherRuns());
  // A signal reports when a launcher starts.
  const auto before = tree_.callCount();
  EXPECT_FALSE(tree_.isProcessTrusted());
  EXPECT_EQ(tree_.callCount(), before);
}

TEST_F(AtspiBusTest, IsNotTrustedWhileSwitchedOff) {
  accessibility_.setEnabled(false);
  EXPECT_FALSE(tree_.isProcessTrusted());
}

TEST_F(AtspiBusTest, PromptSwitchesItOnAndReturnsTheCurrentState) {
  EXPECT_FALSE(tree_.isProcessTrustedWithOptions(true));
  EXPECT_TRUE(holdsWithin([&] { return tree_.isProcessTrusted(); }, serverTimeout));
  EXPECT_TRUE(accessibility_.isEnabled());
  EXPECT_TRUE(tree_.isProcessTrustedWithOptions(true));
}

TEST_F(AtspiBusTest, PromptChangesNothingWhileSwitchedOn) {
  accessibility_.setEnabled(true);
  ASSERT_TRUE(tree_.isProcessTrusted());
  const auto before = tree_.callCount();
  EXPECT_TRUE(tree_.isProcessTrustedWithOptions(true));
  EXPECT_EQ(tree_.callCount(), before);
}

TEST_F(AtspiBusTest, FollowsTheSwitchWithoutCalls) {
  accessibility_.setEnabled(true);
  ASSERT_TRUE(tree_.isProcessTrusted());
  const auto before = tree_.callCount();
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(tree_.isProcessTrusted());
  EXPECT_EQ(tree_.callCount(), before);
  accessibility_.setEnabled(false);
  EXPECT_TRUE(holdsWithin([&] { return !tree_.isProcessTrusted(); }, serverTimeout));
  accessibility_.setEnabled(true);
  EXPECT_TRUE(holdsWithin([&] { return tree_.isProcessTrusted(); }, serverTimeout));
}

TEST_F(AtspiBusTest, ConnectsAgainToABusThatWasRestarted) {
  accessibility_.setEnabled(true);
  TeamsReader reader(tree_, tree_.workspace());
  const AccessibleProgram::Object document{
      .role = 95, .documentAttributes = {{"URI", "https://teams.microsoft.com/v2/"}}};
  {
    AccessibleProgram program(accessibility_.address(), "Browser", "Gecko");
    program.put("/document", document);
    program.put(AccessibleProgram::root, {.role = 75, .children = {"/document"}});
    ASSERT_EQ(reader.read(), TeamsReader::noMeeting);
    accessibility_.kill();
    EXPECT_TRUE(
        holdsWithin([&] { return reader.read() == TeamsReader::notTrusted; }, serverTimeout));
  }
  accessibility_.setEnabled(true);
  EXPECT_TRUE(holdsWithin([&] { return reader.read() == TeamsReader::notRunning; }, serverTimeout));
  AccessibleProgram program(accessibility_.address(), "Browser", "Gecko");
  program.put("/document", document);
  program.put(AccessibleProgram::root, {.role = 75, .children = {"/document"}});
  EXPECT_TRUE(holdsWithin([&] { return reader.read() == TeamsReader::noMeeting; }, serverTimeout));
}

TEST_F(AtspiBusTest, FrozenSessionBusCostsOneTimeout) {
  session_.bus().freeze();
  const auto before = steady_clock::now();
  EXPECT_FALSE(tree_.isProcessTrusted());
  EXPECT_LT(steady_clock::now() - before, 2 * AtspiBus::busTimeout);
  const auto again = steady_clock::now();
  EXPECT_FALSE(tree_.isProcessTrusted());
  EXPECT_LT(steady_clock::now() - again, AtspiBus::busTimeout / 2);
  session_.bus().thaw();
  accessibility_.setEnabled(true);
  EXPECT_TRUE(holdsWithin([&] { return tree_.isProcessTrusted(); }, serverTimeout));
}

// Under load the launcher took more than a second to reply, and the menu offered to turn on what
// was on already.
TEST_F(AtspiBusTest, StaysTrustedWhileTheSwitchDoesNotReply) {
  accessibility_.setEnabled(true);
  ASSERT_TRUE(holdsWithin([&] { return tree_.isProcessTrusted(); }, serverTimeout));
  // Has the switch read again.
  accessibility_.setEnabled(false);
  accessibility_.setEnabled(true);
  const StoppedProcess stopped(launcher());
  EXPECT_TRUE(tree_.isProcessTrusted());
  EXPECT_TRUE(tree_.isProcessTrusted());
}

TEST_F(AtspiBusTest, StaysUntrustedWhileTheSwitchDoesNotReply) {
  accessibility_.setEnabled(false);
  ASSERT_FALSE(tree_.isProcessTrusted());
  accessibility_.setEnabled(true);
  accessibility_.setEnabled(false);
  const StoppedProcess stopped(launcher());
  EXPECT_FALSE(tree_.isProcessTrusted());
}

TEST_F(AtspiBusTest, SwitchThatHasNeverRepliedIsNotAMissingPermission) {
  accessibility_.setEnabled(false);
  {
    const StoppedProcess stopped(launcher());
    EXPECT_TRUE(holdsWithin([&] { return tree_.isProcessTrusted(); }, serverTimeout));
    EXPECT_TRUE(tree_.isProcessTrusted());
    EXPECT_EQ(AtspiBus().readSwitch(), AtspiBus::Switch::unknown);
  }
  EXPECT_TRUE(holdsWithin([&] { return !tree_.isProcessTrusted(); }, serverTimeout));
}

TEST_F(AtspiBusTest, BusThatDoesNotReplyIsNotAMissingPermission) {
  accessibility_.setEnabled(true);
  TeamsReader reader(tree_, tree_.workspace());
  {
    const StoppedProcess stopped(daemon());
    EXPECT_TRUE(
        holdsWithin([&] { return reader.read() == TeamsReader::notRunning; }, serverTimeout));
    // At once: it does not connect again for a second.
    EXPECT_EQ(reader.read(), TeamsReader::notRunning);
  }
  AccessibleProgram program(accessibility_.address(), "Browser", "Gecko");
  program.put("/document",
              {.role = 95, .documentAttributes = {{"URI", "https://teams.microsoft.com/v2/"}}});
  program.put(AccessibleProgram::root, {.role = 75, .children = {"/document"}});
  EXPECT_TRUE(holdsWithin([&] { return reader.read() == TeamsReader::noMeeting; }, serverTimeout));
}

TEST(AtspiBusWithoutSession, IsNotTrusted) {
  rehearsal::Session session;
  session.applyToThisProcess();
  g_setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/at/all", TRUE);
  AtspiAccessibilityTree tree;
  EXPECT_FALSE(tree.isProcessTrusted());
  EXPECT_FALSE(tree.isProcessTrustedWithOptions(true));
  EXPECT_TRUE(tree.workspace().runningApplications().empty());
  g_setenv("DBUS_SESSION_BUS_ADDRESS", "no address at all", TRUE);
  EXPECT_NE(AtspiBus().readSwitch(), AtspiBus::Switch::on);
  g_unsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_NE(AtspiBus().readSwitch(), AtspiBus::Switch::on);
  EXPECT_FALSE(AtspiBus().connect());
}

}  // namespace
}  // namespace hushbox
