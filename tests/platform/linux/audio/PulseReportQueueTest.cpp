#include "platform/linux/audio/PulseReportQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;

class PulseReportQueueTest : public testing::Test {
 protected:
  static PulseReport removal(std::uint32_t index, Instant time) {
    return {time, PulseSourceRemoval{index}};
  }
  /// The index in the first report, 0 if there is none until `latest`.
  std::uint32_t take(Instant latest = Instant::max()) {
    const auto report = queue_.takeUntil(latest);
    return report ? std::get<PulseSourceRemoval>(report->content).index : 0;
  }

  int arrivals_ = 0;
  PulseReportQueue queue_{[this] { ++arrivals_; }};
  const Instant start_ = PulseReportQueue::now();
};

TEST_F(PulseReportQueueTest, ReturnsReportsInTheOrderInWhichTheyHappened) {
  queue_.push(removal(1, start_));
  queue_.push(removal(3, start_ + 2ms));
  queue_.push(removal(2, start_ + 1ms));
  queue_.push(removal(4, start_ + 2ms));
  EXPECT_EQ(take(), 1U);
  EXPECT_EQ(take(), 2U);
  EXPECT_EQ(take(), 3U);
  EXPECT_EQ(take(), 4U);
  EXPECT_EQ(take(), 0U);
}

TEST_F(PulseReportQueueTest, KeepsReportsThatHappenedLater) {
  queue_.push(removal(1, start_));
  queue_.push(removal(2, start_ + 2ms));
  EXPECT_EQ(take(start_ + 1ms), 1U);
  EXPECT_EQ(take(start_ + 1ms), 0U);
  EXPECT_EQ(take(start_ + 2ms), 2U);
}

TEST_F(PulseReportQueueTest, CallsBackOnTheMainContextForReportsOfAnyThread) {
  std::thread([&] { queue_.push(removal(1, start_)); }).join();
  EXPECT_EQ(arrivals_, 0);
  EXPECT_TRUE(rehearsal::holdsWithin([&] { return arrivals_ == 1; }, rehearsal::serverTimeout));
  queue_.push(removal(2, start_));
  EXPECT_TRUE(rehearsal::holdsWithin([&] { return arrivals_ == 2; }, rehearsal::serverTimeout));
  rehearsal::letPass(20ms);
  EXPECT_EQ(arrivals_, 2);
}

TEST_F(PulseReportQueueTest, WaitsForTheFirstReport) {
  std::thread other([&] {
    std::this_thread::sleep_for(20ms);
    queue_.push(removal(1, start_));
  });
  queue_.waitForReport(30s);
  EXPECT_EQ(take(), 1U);
  other.join();
  queue_.waitForReport(20ms);
  EXPECT_GE(PulseReportQueue::now() - start_, 40ms);
}

TEST_F(PulseReportQueueTest, TakesNoReportsOnceItIsClosed) {
  queue_.push(removal(1, start_));
  queue_.close();
  queue_.push(removal(2, start_));
  rehearsal::letPass(20ms);
  EXPECT_EQ(take(), 0U);
  EXPECT_EQ(arrivals_, 0);
}

}  // namespace
}  // namespace hushbox
