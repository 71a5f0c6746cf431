#include "tests/scenarios/WholeDay.h"

#include <gtest/gtest.h>

namespace hushbox {
namespace {

class WholeDayTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(WholeDayTest, EveryHourEndsInOrder) {
  WholeDay day(GetParam());
  EXPECT_EQ(day.live(), std::nullopt);
  EXPECT_GT(day.events(), 1'000U);
  EXPECT_GT(day.presses(), 100U);
}

INSTANTIATE_TEST_SUITE_P(Seed, WholeDayTest, testing::Range<std::uint64_t>(1, 3),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace hushbox
