#pragma once

#include <string>

#include "support/Text.h"
#include "tests/contract/Contract.h"
#include "tests/contract/LocaleDriver.h"

namespace hushbox {

/// What every Locale does.
using LocaleContract = Contract<LocaleDriver>;

TEST_P(LocaleContract, ShortTimeIsTheCurrentTimeInTheLocalesStyle) {
  const std::string before = driver().expectedTime();
  const std::string time = driver().locale().shortTime();
  const std::string after = driver().expectedTime();
  // The minute may change between the two.
  EXPECT_TRUE(time == before || time == after) << time << " instead of " << before;
}

TEST_P(LocaleContract, ShortTimeIsOneShortLineOfText) {
  const std::string time = driver().locale().shortTime();
  EXPECT_NE(time, "");
  EXPECT_TRUE(text::isValidUtf8(time));
  EXPECT_EQ(time.find('\n'), std::string::npos);
  EXPECT_LE(time.size(), 20U) << time;
}

}  // namespace hushbox
