#include "platform/simulated/Journal.h"

#include <gmock/gmock.h>

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(JournalTest, KeepsOrderAcrossParts) {
  Journal journal;
  journal.add("audio", "has ", 2, " name: ", true);
  journal.add("loop", "post");
  journal.add("audio", "remove");
  EXPECT_THAT(journal.lines(),
              ElementsAre("audio: has 2 name: true", "loop: post", "audio: remove"));
  EXPECT_THAT(journal.lines("audio"), ElementsAre("has 2 name: true", "remove"));
}

TEST(JournalTest, TakingRemovesTheLinesOfThatPartOnly) {
  Journal journal;
  journal.add("audio", "one");
  journal.add("loop", "two");
  EXPECT_THAT(journal.take("audio"), ElementsAre("one"));
  EXPECT_THAT(journal.take("audio"), IsEmpty());
  EXPECT_THAT(journal.take(), ElementsAre("loop: two"));
  EXPECT_THAT(journal.take(), IsEmpty());
}

TEST(JournalTest, CountsCallsWithAndWithoutALine) {
  Journal journal;
  journal.add("audio", "one");
  journal.count("loop");
  journal.keepLines(false);
  journal.add("audio", "two");
  journal.take();
  EXPECT_EQ(journal.callCount(), 3U);
  EXPECT_EQ(journal.callCount("audio"), 2U);
  EXPECT_EQ(journal.callCount("loop"), 1U);
  EXPECT_EQ(journal.callCount("menu"), 0U);
}

}  // namespace
}  // namespace hushbox
