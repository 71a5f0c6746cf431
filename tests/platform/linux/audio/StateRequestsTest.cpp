#include "platform/linux/audio/StateRequests.h"

#include <gtest/gtest.h>

namespace hushbox {
namespace {

using std::chrono::microseconds;
using Conclusion = StateRequests::Conclusion;

class StateRequestsTest : public testing::Test {
 protected:
  void sendForEvents(int count) {
    for (int event = 0; event < count; ++event) requests_.sentForEvent(now_);
  }
  Conclusion reply(bool differs) { return requests_.replied(differs, now_); }
  void expectNothingOf(int replies) {
    for (int i = 0; i < replies; ++i) {
      EXPECT_EQ(reply(false), Conclusion::none);
    }
  }

  Instant now_;
  StateRequests requests_;
};

TEST_F(StateRequestsTest, TwoEventsAtOnceAfterWhichNothingDiffersAreAnUndoneChange) {
  for (int change = 0; change < 3; ++change) {
    sendForEvents(2);
    EXPECT_EQ(reply(false), Conclusion::none);
    EXPECT_EQ(reply(false), Conclusion::undone);
  }
}

TEST_F(StateRequestsTest, SecondEventDirectlyBehindTheFirstReplyCounts) {
  for (int change = 0; change < 3; ++change) {
    sendForEvents(1);
    EXPECT_EQ(reply(false), Conclusion::requestAgain);
    sendForEvents(1);
    EXPECT_EQ(reply(false), Conclusion::none);
    EXPECT_EQ(reply(false), Conclusion::undone);
  }
}

TEST_F(StateRequestsTest, OneEventAfterWhichNothingDiffersIsNotAnUndoneChange) {
  for (int event = 0; event < 4; ++event) {
    sendForEvents(1);
    EXPECT_EQ(reply(false), Conclusion::requestAgain);
    EXPECT_EQ(reply(false), Conclusion::none);
    now_ += StateRequests::maxEventDelay + microseconds{1};
  }
}

TEST_F(StateRequestsTest, SecondEventAMomentAfterTheLastReplyCounts) {
  for (int change = 0; change < 3; ++change) {
    sendForEvents(1);
    EXPECT_EQ(reply(false), Conclusion::requestAgain);
    EXPECT_EQ(reply(false), Conclusion::none);
    now_ += StateRequests::maxEventDelay;
    sendForEvents(1);
    EXPECT_EQ(reply(false), Conclusion::undone);
  }
}

TEST_F(StateRequestsTest, SecondEventWithADifferenceIsNotAnUndoneChange) {
  sendForEvents(1);
  EXPECT_EQ(reply(false), Conclusion::requestAgain);
  EXPECT_EQ(reply(false), Conclusion::none);
  sendForEvents(1);
  EXPECT_EQ(reply(true), Conclusion::none);
  // The difference explains this event, too.
  sendForEvents(1);
  EXPECT_EQ(reply(false), Conclusion::requestAgain);
}

TEST_F(StateRequestsTest, ThirdEventAMomentLaterIsNotAnUndoneChange) {
  sendForEvents(1);
  EXPECT_EQ(reply(false), Conclusion::requestAgain);
  EXPECT_EQ(reply(false), Conclusion::none);
  sendForEvents(2);
  expectNothingOf(2);
}

TEST_F(StateRequestsTest, VisibleDifferenceExplainsTheEvents) {
  sendForEvents(1);
  EXPECT_EQ(reply(true), Conclusion::none);

  sendForEvents(2);
  EXPECT_EQ(reply(true), Conclusion::none);
  EXPECT_EQ(reply(false), Conclusion::none);

  sendForEvents(2);
  EXPECT_EQ(reply(false), Conclusion::none);
  EXPECT_EQ(reply(true), Conclusion::none);

  sendForEvents(1);
  EXPECT_EQ(reply(false), Conclusion::requestAgain);
  sendForEvents(1);
  EXPECT_EQ(reply(true), Conclusion::none);
  EXPECT_EQ(reply(false), Conclusion::none);
}

TEST_F(StateRequestsTest, ChangesSeenInTheFirstReplyOfSeveralAreNotUndone) {
  // A moved slider: the first reply shows the last position, and the others repeat it.
  sendForEvents(3);
  EXPECT_EQ(reply(true), Conclusion::none);
  expectNothingOf(2);
}

TEST_F(StateRequestsTest, MoreThanTwoEventsAtOnceAreNotAnUndoneChange) {
  sendForEvents(3);
  expectNothingOf(3);
}

TEST_F(StateRequestsTest, RequestsForAnotherReasonProveNothing) {
  requests_.sentOtherwise();
  sendForEvents(2);
  expectNothingOf(3);
}

}  // namespace
}  // namespace hushbox
