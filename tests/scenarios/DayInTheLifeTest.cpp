#include "tests/scenarios/DayInTheLife.h"

#include <gtest/gtest.h>

namespace hushbox {
namespace {

using DayKind = DayInTheLife::Kind;

constexpr std::uint64_t seeds = 20;

class DayInTheLifeTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(DayInTheLifeTest, PlainDayKeepsEveryInvariant) {
  DayInTheLife day(GetParam(), DayKind::plain);
  for (int part = 0; part < 2; ++part) {
    day.live(100);
    day.settle();
  }
  EXPECT_GT(day.teamsPresses(), 20);
  EXPECT_GT(day.polls(), 80);
}

TEST_P(DayInTheLifeTest, WildDayKeepsEveryInvariant) {
  DayInTheLife day(GetParam(), DayKind::wild);
  for (int part = 0; part < 6; ++part) {
    day.live(100);
    day.settle();
  }
  EXPECT_GT(day.buttonEvents(), 20);
  EXPECT_GT(day.teamsPresses(), 1);
  EXPECT_GT(day.polls(), 50);
}

INSTANTIATE_TEST_SUITE_P(Seed, DayInTheLifeTest, testing::Range<std::uint64_t>(1, seeds + 1),
                         testing::PrintToStringParamName());

TEST(DayInTheLifeReplayTest, SameSeedGivesTheSameDay) {
  for (const DayKind kind : {DayKind::plain, DayKind::wild}) {
    const auto history = [kind] {
      DayInTheLife day(7, kind);
      day.live(300);
      return day.history();
    };
    const Lines first = history();
    EXPECT_EQ(history(), first);
    EXPECT_GT(first.size(), 1000U);
  }
}

TEST(DayInTheLifeReplayTest, AnotherSeedGivesAnotherDay) {
  const auto historyOf = [](std::uint64_t seed) {
    DayInTheLife day(seed, DayKind::wild);
    day.live(100);
    return day.history();
  };
  EXPECT_NE(historyOf(1), historyOf(2));
}

}  // namespace
}  // namespace hushbox
