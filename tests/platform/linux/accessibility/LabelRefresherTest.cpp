#include "platform/linux/accessibility/LabelRefresher.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "platform/linux/accessibility/CompositingManager.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/AccessibleProgramsFixture.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::serverTimeout;

/// A browser whose labels grow stale, with one window and a meeting in it, on a desktop with a
/// compositing manager.
class LabelRefresherTest : public AccessibleProgramsFixture {
 protected:
  static constexpr std::uint32_t showing = 1U << 25;
  static constexpr std::uint32_t iconified = 1U << 15;

  LabelRefresherTest() {
    environment_.set("DISPLAY", screen_.display().name());
    CompositingManager manager;
    EXPECT_TRUE(holdsWithin([&] { return manager.isRunning(); }, serverTimeout));
    browser_->put("/b", button(label));
    putDocument("/view");
    browser_->put("/view", {.role = 39, .parent = "/window", .children = {"/document"}});
    putWindow(showing, {"/view"});
    browser_->put("/other", {.role = 95, .documentAttributes = {{"URI", "https://example.org/"}}});
    browser_->put(root, {.role = 75, .children = {"/window"}});
    browser_->answerWith([this](const std::string&, const std::string& method) -> GVariant* {
      if (method == "GetAccessibleAtPoint") ++refreshes_;
      return nullptr;
    });
  }

  void putDocument(const std::string& parent) {
    browser_->put("/document", {.role = 95,
                                .documentAttributes = {{"URI", teamsAddress}},
                                .parent = parent,
                                .children = {"/b"}});
  }
  void putWindow(std::uint32_t states, const std::vector<std::string>& children) {
    browser_->put("/window", {.role = 23, .parent = root, .states = states, .children = children});
  }
  /// The first read looks for the window, the second finds it on the screen.
  void readTwice() {
    ASSERT_TRUE(readsLabel());
    ASSERT_TRUE(readsLabel());
  }
  /// The shortest of several reads, so that the load of other programs does not count.
  std::chrono::steady_clock::duration readTime() {
    auto shortest = std::chrono::steady_clock::duration::max();
    for (int i = 0; i < 10; ++i) {
      const auto began = std::chrono::steady_clock::now();
      EXPECT_EQ(reader_.read(), label);
      shortest = std::min(shortest, std::chrono::steady_clock::now() - began);
    }
    return shortest;
  }
  std::uint64_t callsOfARead() {
    const auto before = tree_.callCount();
    EXPECT_EQ(reader_.read(), label);
    return tree_.callCount() - before;
  }

  rehearsal::Session screen_{{.display = true}};
  ScopedEnvironment environment_;
  std::unique_ptr<rehearsal::ServerProcess> compositor_ =
      screen_.start("xcompmgr.log", {"xcompmgr"});
  std::unique_ptr<AccessibleProgram> browser_ = program("Browser", "Chromium");
  std::atomic<int> refreshes_ = 0;
};

TEST_F(LabelRefresherTest, ReadsWithoutWaitingFromAPageBeingDrawn) {
  readTwice();
  EXPECT_TRUE(holdsWithin([&] { return readTime() < LabelRefresher::refreshTime; }, serverTimeout));
}

TEST_F(LabelRefresherTest, ReadsInOneBatchFromAPageBeingDrawn) {
  readTwice();
  EXPECT_TRUE(holdsWithin([&] { return callsOfARead() <= 6U; }, serverTimeout));
}

TEST_F(LabelRefresherTest, ReadsAChangedLabelFromAPageBeingDrawn) {
  readTwice();
  browser_->put("/b", button("Unmute mic (Ctrl+Shift+M)"));
  EXPECT_EQ(reader_.read(), "Unmute mic (Ctrl+Shift+M)");
}

TEST_F(LabelRefresherTest, RefreshesAPageBeingDrawnInTime) {
  readTwice();
  const int before = refreshes_;
  EXPECT_TRUE(
      holdsWithin([&] { return reader_.read() == label && refreshes_ > before; }, serverTimeout));
}

TEST_F(LabelRefresherTest, WaitsForAPageInAMinimisedWindow) {
  readTwice();
  putWindow(showing | iconified, {"/view"});
  const int before = refreshes_;
  EXPECT_GE(readTime(), LabelRefresher::refreshTime);
  EXPECT_GE(refreshes_ - before, 10);
}

TEST_F(LabelRefresherTest, RefreshesARestingPageAheadOfThePoll) {
  readTwice();
  putWindow(showing | iconified, {"/view"});
  ASSERT_EQ(reader_.read(), label);
  const int before = refreshes_;
  rehearsal::letPass(LabelRefresher::pollInterval);
  EXPECT_EQ(refreshes_ - before, 1);
  // Too late for the poll: on a busy machine the next one is in time.
  EXPECT_TRUE(holdsWithin(
      [&] {
        rehearsal::letPass(LabelRefresher::pollInterval);
        const auto began = std::chrono::steady_clock::now();
        EXPECT_EQ(reader_.read(), label);
        return std::chrono::steady_clock::now() - began < LabelRefresher::refreshTime / 2;
      },
      serverTimeout));
  EXPECT_TRUE(holdsWithin(
      [&] {
        rehearsal::letPass(LabelRefresher::pollInterval);
        return callsOfARead() <= 6U;
      },
      serverTimeout));
}

TEST_F(LabelRefresherTest, WaitsForAPageInAWindowThatIsNotShown) {
  readTwice();
  putWindow(0, {"/view"});
  EXPECT_GE(readTime(), LabelRefresher::refreshTime);
}

TEST_F(LabelRefresherTest, WaitsWhereWindowsHideOneAnother) {
  readTwice();
  compositor_.reset();
  EXPECT_GE(readTime(), LabelRefresher::refreshTime);
}

TEST_F(LabelRefresherTest, WaitsForAPageBehindAnotherTab) {
  readTwice();
  putDocument({});
  putWindow(showing, {"/other"});
  EXPECT_GE(readTime(), LabelRefresher::refreshTime);
}

TEST_F(LabelRefresherTest, ReadsWithoutWaitingOnceTheTabIsInFrontAgain) {
  readTwice();
  putDocument({});
  putWindow(showing, {"/other"});
  EXPECT_GE(readTime(), LabelRefresher::refreshTime);
  putDocument("/view");
  putWindow(showing, {"/view"});
  EXPECT_TRUE(holdsWithin([&] { return readTime() < LabelRefresher::refreshTime; }, serverTimeout));
}

TEST_F(LabelRefresherTest, ReadsWithoutWaitingAfterTheTabWasMovedToAnotherWindow) {
  readTwice();
  browser_->put("/its_view", {.role = 39, .parent = "/another", .children = {"/document"}});
  browser_->put("/another",
                {.role = 23, .parent = root, .states = showing, .children = {"/its_view"}});
  putDocument("/its_view");
  putWindow(0, {"/other"});
  EXPECT_TRUE(holdsWithin([&] { return readTime() < LabelRefresher::refreshTime; }, serverTimeout));
}

TEST_F(LabelRefresherTest, WaitsForAPageNestedInAnother) {
  // The inner page keeps its parents when the outer page goes to the background.
  browser_->put("/outer", {.role = 95,
                           .documentAttributes = {{"URI", "https://example.org/"}},
                           .parent = "/window",
                           .children = {"/view"}});
  browser_->put("/view", {.role = 39, .parent = "/outer", .children = {"/document"}});
  putWindow(showing, {"/outer"});
  readTwice();
  EXPECT_GE(readTime(), LabelRefresher::refreshTime);
}

TEST_F(LabelRefresherTest, FindsTheButtonAgainBehindAnotherTab) {
  // No search finds the document there, so it must be remembered without its button too.
  readTwice();
  putDocument({});
  putWindow(showing, {"/other"});
  browser_->put("/b", {});
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
  browser_->put("/b", button(label));
  EXPECT_EQ(reader_.read(), label);
}

TEST_F(LabelRefresherTest, EndsWithTheMeeting) {
  readTwice();
  browser_->put("/b", {});
  EXPECT_EQ(reader_.read(), TeamsReader::noMeeting);
  browser_->put("/b", button(label));
  EXPECT_EQ(reader_.read(), label);
  browser_->put("/b", {});
  browser_->put("/document", {});
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
}

TEST_F(LabelRefresherTest, DropsAPageThatCountsByItsTitleWhenTheTitleChanges) {
  const auto putTitled = [&](const std::string& title) {
    browser_->put("/document", {.role = 95,
                                .name = title,
                                .documentAttributes = {{"MimeType", "text/html"}},
                                .parent = "/view",
                                .children = {"/b"}});
  };
  putTitled("Weekly sync | Microsoft Teams");
  readTwice();
  putTitled("Song");
  EXPECT_EQ(reader_.read(), TeamsReader::notRunning);
}

TEST_F(LabelRefresherTest, WaitsWhereTheWindowIsNotFound) {
  browser_->put("/view", {.role = 39, .parent = "/view", .children = {"/document"}});
  readTwice();
  EXPECT_GE(readTime(), LabelRefresher::refreshTime);
}

TEST_F(LabelRefresherTest, WaitsAfterALongTimeWithoutARead) {
  readTwice();
  std::this_thread::sleep_for(LabelRefresher::maxRefreshAge);
  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(reader_.read(), label);
  EXPECT_GE(std::chrono::steady_clock::now() - began, LabelRefresher::refreshTime);
}

TEST_F(LabelRefresherTest, ReadsWithoutWaitingFromProgramsThatKeepLabelsCurrent) {
  browser_.reset();
  const auto teams = browser({{"/b", button(label)}});
  ASSERT_TRUE(holdsWithin([&] { return reader_.read() == label; }, serverTimeout));
  EXPECT_LE(callsOfARead(), 4U);
}

TEST_F(LabelRefresherTest, PageOfAProgramThatHasExitedIsNotInFront) {
  AtspiBus bus;
  ASSERT_TRUE(connects(bus));
  // The list of programs no longer has this one.
  const AtspiPrograms programs(bus);
  LabelRefresher labels(bus, programs);
  const auto page =
      std::make_shared<TeamsDocument>(TeamsDocument{.object = {browser_->busName(), "/document"}});
  labels.findFronts({page});
  EXPECT_FALSE(labels.isInFront(*page));
}

}  // namespace
}  // namespace hushbox
