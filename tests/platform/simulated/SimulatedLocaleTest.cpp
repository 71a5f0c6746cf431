#include "platform/simulated/SimulatedLocale.h"

#include <gmock/gmock.h>

namespace hushbox {
namespace {

using namespace std::chrono_literals;

class SimulatedLocaleTest : public testing::Test {
 protected:
  Journal journal;
  SimulatedMainLoop loop{journal};
  SimulatedLocale locale{journal, loop};
};

TEST_F(SimulatedLocaleTest, TimeIsInitiallyFixed) {
  EXPECT_EQ(locale.shortTime(), "10:42");
  loop.advance(24h);
  EXPECT_EQ(locale.shortTime(), "10:42");
  locale.setShortTime("10:42 AM");
  EXPECT_EQ(locale.shortTime(), "10:42 AM");
}

TEST_F(SimulatedLocaleTest, WallClockFollowsTheLoopPastMidnight) {
  loop.advance(5h);
  locale.setTimeOfDay(23h + 59min + 59s);
  EXPECT_EQ(locale.shortTime(), "23:59");
  loop.advance(1s);
  EXPECT_EQ(locale.shortTime(), "00:00");
  loop.sleep(9h + 5min);
  EXPECT_EQ(locale.shortTime(), "09:05");
}

TEST_F(SimulatedLocaleTest, WallClockCanBeSetBackAndForward) {
  locale.setTimeOfDay(12h);
  locale.setTimeOfDay(11h);
  EXPECT_EQ(locale.shortTime(), "11:00");
  locale.setTimeOfDay(-1h);
  EXPECT_EQ(locale.shortTime(), "23:00");
}

}  // namespace
}  // namespace hushbox
