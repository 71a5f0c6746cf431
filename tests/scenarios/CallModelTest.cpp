#include "tests/scenarios/CallModel.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/scenarios/CallComparison.h"
#include "tests/scenarios/CallEvent.h"

namespace hushbox {
namespace {

constexpr std::size_t eventsPerHistory = 1'000;
constexpr std::uint64_t historiesPerCase = 250;
constexpr std::uint64_t cases = 8;

CallHistory shrunk(CallHistory history, const CallModel::Rules& rules = {}) {
  return shrink(std::move(history), [&rules](const CallHistory& shorter) {
    return compareWithModel(shorter, rules).has_value();
  });
}

/// What to print when the program and the model differ: enough to run it again in
/// `RunsAPrintedHistoryAgain`.
std::string report(std::uint64_t seed, const CallHistory& history) {
  const CallHistory shorter = shrunk(history);
  const auto difference = compareWithModel(shorter);
  return "With seed " + std::to_string(seed) + ", the program differs from the model:\n" +
         (difference ? difference->text : "") + "Shrunk history: " + print(shorter);
}

/// The seeds of case n are n * historiesPerCase + 1 and the following.
class CallModelTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(CallModelTest, ProgramMatchesTheModelAfterEveryEvent) {
  for (std::uint64_t i = 1; i <= historiesPerCase; ++i) {
    const std::uint64_t seed = GetParam() * historiesPerCase + i;
    const CallHistory history = randomCallHistory(seed, eventsPerHistory);
    ASSERT_EQ(compareWithModel(history), std::nullopt) << report(seed, history);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, CallModelTest, testing::Range<std::uint64_t>(0, cases),
                         testing::PrintToStringParamName());

// What the comparison finds

/// A figure of the rules that differs from the program's.
struct WrongRule {
  const char* name;
  CallModel::Rules rules;
};

void PrintTo(const WrongRule& rule, std::ostream* out) {
  *out << rule.name;
}

class CallModelSensitivityTest : public testing::TestWithParam<WrongRule> {};

TEST_P(CallModelSensitivityTest, WrongFigureIsFoundAndShrunk) {
  for (std::uint64_t seed = 1; seed <= 100; ++seed) {
    const CallHistory history = randomCallHistory(seed, eventsPerHistory);
    if (!compareWithModel(history, GetParam().rules)) continue;
    const CallHistory shorter = shrunk(history, GetParam().rules);
    EXPECT_LE(shorter.size(), 25U) << print(shorter);
    EXPECT_TRUE(compareWithModel(shorter, GetParam().rules)) << print(shorter);
    EXPECT_EQ(compareWithModel(shorter), std::nullopt) << print(shorter);
    return;
  }
  FAIL() << "No history showed the difference.";
}

INSTANTIATE_TEST_SUITE_P(Figures, CallModelSensitivityTest,
                         testing::Values(WrongRule{"BounceWindow", {.bounceWindow = 300'000'001}},
                                         WrongRule{"EchoWindow", {.echoWindow = 500'000'001}},
                                         WrongRule{"PollInterval", {.pollInterval = 1'000'000'001}},
                                         WrongRule{"SearchPause", {.searchPause = 5'000'000'001}},
                                         WrongRule{"FirstRestoreVolume",
                                                   {.firstRestoreVolume = 0.61F}}),
                         [](const auto& info) { return info.param.name; });

TEST(CallHistoryTest, RunsAPrintedHistoryAgain) {
  const auto history = parseCallHistory(
      "plug 80, pass 0, join 0, use 1, pass 1000000000, volume 0, pass 299999999, volume 80, "
      "pass 0, volume 0, pass 300000000, teams 0, pass 1000000000");
  ASSERT_TRUE(history);
  EXPECT_EQ(compareWithModel(*history), std::nullopt);
}

TEST(CallHistoryTest, ReadsWhatItPrints) {
  const CallHistory history = randomCallHistory(1, 500);
  EXPECT_EQ(parseCallHistory(print(history)), history);
  EXPECT_EQ(parseCallHistory(""), CallHistory{});
}

TEST(CallHistoryTest, ReturnsNulloptForOtherText) {
  for (const char* text : {"pass", "pass x", "press 1", "pass 1 2", "pass 1,,pass 1"}) {
    EXPECT_EQ(parseCallHistory(text), std::nullopt) << text;
  }
}

TEST(CallHistoryTest, SameSeedGivesTheSameHistory) {
  EXPECT_EQ(randomCallHistory(3, 200), randomCallHistory(3, 200));
  EXPECT_NE(randomCallHistory(3, 200), randomCallHistory(4, 200));
}

}  // namespace
}  // namespace hushbox
