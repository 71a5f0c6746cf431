#include "platform/linux/audio/StateRequests.h"

#include <gtest/gtest.h>

namespace hushbox {
namespace {

using Conclusion = StateRequests::Conclusion;

class StateRequestsTest : public testing::Test {
 protected:
  void sendForEvents(int count) {
    for (int event = 0; event < count; ++event) requests_.sentForEvent();
  }
  void expectNothingOf(int replies) {
    for (int reply = 0; reply < replies; ++reply) {
      EXPECT_EQ(requests_.replied(false), Conclusion::none);
    }
  }

  StateRequests requests_;
};

TEST_F(StateRequestsTest, TwoEventsAtOnceAfterWhichNothingDiffersAreAnUndoneChange) {
  for (int change = 0; change < 3; ++change) {
    sendForEvents(2);
    EXPECT_EQ(requests_.replied(false), Conclusion::none);
    EXPECT_EQ(requests_.replied(false), Conclusion::undone);
  }
}

TEST_F(StateRequestsTest, SecondEventDirectlyBehindTheFirstReplyCounts) {
  for (int change = 0; change < 3; ++change) {
    sendForEvents(1);
    EXPECT_EQ(requests_.replied(false), Conclusion::requestAgain);
    sendForEvents(1);
    EXPECT_EQ(requests_.replied(false), Conclusion::none);
    EXPECT_EQ(requests_.replied(false), Conclusion::undone);
  }
}

TEST_F(StateRequestsTest, OneEventAfterWhichNothingDiffersIsNotAnUndoneChange) {
  for (int event = 0; event < 4; ++event) {
    sendForEvents(1);
    EXPECT_EQ(requests_.replied(false), Conclusion::requestAgain);
    EXPECT_EQ(requests_.replied(false), Conclusion::none);
  }
}

TEST_F(StateRequestsTest, VisibleDifferenceExplainsTheEvents) {
  sendForEvents(1);
  EXPECT_EQ(requests_.replied(true), Conclusion::none);

  sendForEvents(2);
  EXPECT_EQ(requests_.replied(true), Conclusion::none);
  EXPECT_EQ(requests_.replied(false), Conclusion::none);

  sendForEvents(2);
  EXPECT_EQ(requests_.replied(false), Conclusion::none);
  EXPECT_EQ(requests_.replied(true), Conclusion::none);

  sendForEvents(1);
  EXPECT_EQ(requests_.replied(false), Conclusion::requestAgain);
  sendForEvents(1);
  EXPECT_EQ(requests_.replied(true), Conclusion::none);
  EXPECT_EQ(requests_.replied(false), Conclusion::none);
}

TEST_F(StateRequestsTest, ChangesSeenInTheFirstReplyOfSeveralAreNotUndone) {
  // A moved slider: the first reply shows the last position, and the others repeat it.
  sendForEvents(3);
  EXPECT_EQ(requests_.replied(true), Conclusion::none);
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
