#include "platform/linux/accessibility/TeamsRanking.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "rehearsal/ServerProcess.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/AccessibleProgramsFixture.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using testing::ElementsAre;

/// A browser with pages of Teams in windows of their own: "/mic1" in "/window1" and so on.
class TeamsRankingTest : public AccessibleProgramsFixture {
 protected:
  static constexpr std::uint32_t showing = 1U << 25;
  static constexpr std::uint32_t active = 1U << 1;

  static std::string labelOf(int page) { return "Mute mic " + std::to_string(page); }

  void putPages(int count) {
    Object application{.role = 75};
    for (int page = 1; page <= count; ++page) {
      const std::string number = std::to_string(page);
      browser_->put("/mic" + number, button(labelOf(page)));
      browser_->put("/document" + number, {.role = 95,
                                           .documentAttributes = {{"URI", teamsAddress}},
                                           .parent = "/window" + number,
                                           .children = {"/mic" + number}});
      application.children.push_back("/window" + number);
    }
    pages_ = count;
    bringToFront(0);
    browser_->put(root, application);
  }
  /// Gives that page's window the focus; 0 for none.
  void bringToFront(int front) {
    for (int page = 1; page <= pages_; ++page) {
      const std::string number = std::to_string(page);
      browser_->put("/window" + number, {.role = 23,
                                         .parent = root,
                                         .states = page == front ? showing | active : showing,
                                         .children = {"/document" + number}});
    }
  }
  std::uint64_t callsOfARead() {
    const auto before = tree_.callCount();
    reader_.read();
    return tree_.callCount() - before;
  }

  int pages_ = 0;
  std::unique_ptr<AccessibleProgram> browser_ = program();
};

TEST_F(TeamsRankingTest, PageInFrontComesFirst) {
  putPages(3);
  bringToFront(2);
  EXPECT_EQ(reader_.read(), labelOf(2));
  EXPECT_EQ(reader_.press(), accessibility::success);
  EXPECT_THAT(browser_->performed(), ElementsAre("/mic2 0"));
}

TEST_F(TeamsRankingTest, ChoosesAgainWhenAnotherPageComesToTheFront) {
  putPages(1);
  bringToFront(1);
  for (int i = 0; i < 3; ++i) ASSERT_EQ(reader_.read(), labelOf(1));
  putPages(2);
  bringToFront(2);
  EXPECT_EQ(reader_.read(), labelOf(2));
  for (int i = 0; i < 3; ++i) ASSERT_EQ(reader_.read(), labelOf(2));
  bringToFront(1);
  EXPECT_EQ(reader_.read(), labelOf(1));
}

TEST_F(TeamsRankingTest, PageUsedLastStaysChosenBehindOtherPrograms) {
  putPages(3);
  bringToFront(3);
  for (int i = 0; i < 3; ++i) ASSERT_EQ(reader_.read(), labelOf(3));
  bringToFront(0);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(reader_.read(), labelOf(3));
  TeamsReader another(tree_, tree_.workspace());
  EXPECT_EQ(another.read(), labelOf(3));
}

TEST_F(TeamsRankingTest, PollCostsTheSameHoweverManyPagesThereAre) {
  putPages(1);
  ASSERT_TRUE(reads(reader_, labelOf(1)));
  for (int i = 0; i < 3; ++i) ASSERT_EQ(reader_.read(), labelOf(1));
  const auto one = callsOfARead();
  putPages(8);
  TeamsReader another(tree_, tree_.workspace());
  ASSERT_EQ(another.read(), labelOf(1));
  for (int i = 0; i < 2; ++i) ASSERT_EQ(reader_.read(), labelOf(1));
  EXPECT_EQ(callsOfARead(), one);
}

TEST_F(TeamsRankingTest, ControlIsReadNoMoreOftenWhenAPageThatLosesItsFocusStaysChosen) {
  putPages(3);
  std::atomic<int> reads = 0;
  browser_->answerWith([&](const std::string& path, const std::string&) -> GVariant* {
    reads += path == "/mic3";
    return nullptr;
  });
  const auto readsOfAPoll = [&] {
    reads = 0;
    return reader_.read() == labelOf(3) ? reads.load() : 0;
  };
  // On a busy machine a program may reply later than one reading waits, and is then read again.
  EXPECT_TRUE(holdsWithin(
      [&] {
        bringToFront(3);
        for (int i = 0; i < 3; ++i) readsOfAPoll();
        const int before = readsOfAPoll();
        bringToFront(0);
        return before > 0 && readsOfAPoll() == before;
      },
      rehearsal::serverTimeout));
}

TEST_F(TeamsRankingTest, PageThatWasInFrontDuringAPollComesBeforeOneThatWasSoEarlier) {
  putPages(2);
  AtspiBus bus;
  ASSERT_TRUE(connects(bus));
  AtspiPrograms programs(bus);
  LabelRefresher labels(bus, programs);
  std::vector<std::int32_t> recording;
  TeamsRanking ranking(labels, [&] { return recording; });
  ASSERT_TRUE(holdsWithin([&] { return programs.refresh() || !programs.hosts().empty(); },
                          rehearsal::serverTimeout));
  const auto pageOf = [&](int page, std::int32_t process, TeamsDocument::Evidence evidence) {
    return std::make_shared<TeamsDocument>(
        TeamsDocument{.object = {browser_->busName(), "/document" + std::to_string(page)},
                      .processIdentifier = process,
                      .evidence = evidence});
  };
  const auto used = pageOf(1, getpid(), TeamsDocument::Evidence::title);
  const auto other = pageOf(2, 1'999'999'999, TeamsDocument::Evidence::address);
  std::vector<TeamsDocumentRef> documents{other, used};
  const auto findsInFront = [&](bool first, bool second) {
    return holdsWithin(
        [&] {
          labels.findFronts(documents);
          return labels.isInFront(*used) == first && labels.isInFront(*other) == second;
        },
        rehearsal::serverTimeout);
  };
  // Both are in windows that claim the focus.
  bringToFront(1);
  browser_->put(
      "/window2",
      {.role = 23, .parent = root, .states = showing | active, .children = {"/document2"}});
  ASSERT_TRUE(findsInFront(true, true));
  recording = {getpid()};
  ranking.sort(documents);
  ASSERT_THAT(documents, ElementsAre(used, other));
  recording.clear();
  bringToFront(1);
  ASSERT_TRUE(findsInFront(true, false));
  EXPECT_FALSE(ranking.hasLostGround(used));
  bringToFront(0);
  ASSERT_TRUE(findsInFront(false, false));
  EXPECT_TRUE(ranking.hasLostGround(used));
  ranking.sort(documents);
  EXPECT_THAT(documents, ElementsAre(used, other));
}

/// Documents of processes that this test starts.
class TeamsRankingRecordingTest : public testing::Test {
 protected:
  static TeamsDocumentRef document(std::int32_t process, TeamsDocument::Evidence evidence) {
    return std::make_shared<TeamsDocument>(
        TeamsDocument{.object = {":1." + std::to_string(process), "/document"},
                      .processIdentifier = process,
                      .evidence = evidence});
  }

  rehearsal::Session session_;
  std::unique_ptr<rehearsal::ServerProcess> other_ = session_.start("sleep.log", {"sleep", "60"});
  AtspiBus bus_;
  AtspiPrograms programs_{bus_};
  LabelRefresher labels_{bus_, programs_};
  std::vector<std::int32_t> recording_;
  TeamsRanking ranking_{labels_, [this] { return recording_; }};
  TeamsDocumentRef ours_ = document(getpid(), TeamsDocument::Evidence::title);
  TeamsDocumentRef theirs_ = document(other_->pid(), TeamsDocument::Evidence::address);
};

TEST_F(TeamsRankingRecordingTest, ProgramThatRecordsComesFirst) {
  std::vector<TeamsDocumentRef> documents{ours_, theirs_};
  ranking_.sort(documents);
  EXPECT_THAT(documents, ElementsAre(theirs_, ours_));
  recording_ = {getpid()};
  ranking_.sort(documents);
  EXPECT_THAT(documents, ElementsAre(ours_, theirs_));
}

TEST_F(TeamsRankingRecordingTest, ProcessThatAProgramHasStartedBelongsToIt) {
  const auto exited = document(1'999'999'999, TeamsDocument::Evidence::address);
  std::vector<TeamsDocumentRef> documents{exited, ours_};
  recording_ = {other_->pid()};
  ranking_.sort(documents);
  EXPECT_THAT(documents, ElementsAre(ours_, exited));
}

TEST_F(TeamsRankingRecordingTest, LosesGroundOnceAnotherProgramRecords) {
  EXPECT_FALSE(ranking_.hasLostGround(theirs_));
  recording_ = {getpid()};
  EXPECT_TRUE(ranking_.hasLostGround(theirs_));
  EXPECT_FALSE(ranking_.hasLostGround(theirs_));
  recording_ = {other_->pid()};
  EXPECT_FALSE(ranking_.hasLostGround(theirs_));
}

TEST_F(TeamsRankingRecordingTest, LosesGroundAgainWhileAnotherProgramStillRecords) {
  EXPECT_FALSE(ranking_.hasLostGround(theirs_));
  recording_ = {getpid()};
  EXPECT_TRUE(ranking_.hasLostGround(theirs_));
  EXPECT_FALSE(ranking_.hasLostGround(theirs_));
  std::this_thread::sleep_for(TeamsRanking::recorderInterval);
  EXPECT_TRUE(ranking_.hasLostGround(theirs_));
  EXPECT_FALSE(ranking_.hasLostGround(theirs_));
}

}  // namespace
}  // namespace hushbox
