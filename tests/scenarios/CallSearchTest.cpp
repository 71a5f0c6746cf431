#include "tests/scenarios/CallSearch.h"

#include <gtest/gtest.h>

#include <iostream>
#include <ostream>

#include "tests/scenarios/CallComparison.h"
#include "tests/scenarios/CallInvariants.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using Ties = ProgramOnDesk::Ties;

void expectNoFailure(const CallSearch& search) {
  const CallSearch::Result result = search.run();
  std::cout << "  searched " << summary(result) << '\n';
  ASSERT_FALSE(result.failure) << result.failure->text
                               << "\nHistory: " << print(result.failure->history);
  EXPECT_TRUE(result.isComplete || result.depth == search.maxDepth);
}

TEST(CallSearchTest, PressesKeepEveryInvariant) {
  expectNoFailure({.start = startedCall(), .inputs = pressInputs(), .maxDepth = 5});
}

TEST(CallSearchTest, PressesKeepEveryInvariantWithTiesReversed) {
  expectNoFailure({.start = startedCall(),
                   .inputs = pressInputs(),
                   .maxDepth = 5,
                   .ties = Ties::lastScheduledFirst});
}

TEST(CallSearchTest, EverythingKeepsEveryInvariant) {
  expectNoFailure({.start = startedCall(), .inputs = allInputs(), .maxDepth = 3});
}

TEST(CallSearchTest, EverythingKeepsEveryInvariantFromTheStart) {
  expectNoFailure({.start = {}, .inputs = allInputs(), .maxDepth = 3});
}

TEST(CallSearchTest, FindsFewStatesWhereNothingHappens) {
  const CallSearch search{.start = {{CallEvent::Kind::pass, 0}},
                          .inputs = {{CallEvent::Kind::pass, 500'000'000}},
                          .maxDepth = 10};
  const CallSearch::Result result = search.run();
  // Just after the start, between two polls, and just after a poll.
  EXPECT_EQ(summary(result), "2 states, 2 transitions, depth 1, complete");
}

/// A figure of the rules that differs from the program's.
struct WrongFigure {
  const char* name;
  CallModel::Rules rules;
};

void PrintTo(const WrongFigure& figure, std::ostream* out) {
  *out << figure.name;
}

class CallSearchSensitivityTest : public testing::TestWithParam<WrongFigure> {};

TEST_P(CallSearchSensitivityTest, WrongFigureIsFound) {
  const CallSearch search{
      .start = startedCall(), .inputs = pressInputs(), .maxDepth = 6, .rules = GetParam().rules};
  const CallSearch::Result result = search.run();
  ASSERT_TRUE(result.failure) << summary(result);
  EXPECT_TRUE(compareWithModel(result.failure->history, GetParam().rules));
}

INSTANTIATE_TEST_SUITE_P(
    Figures, CallSearchSensitivityTest,
    testing::Values(WrongFigure{"LongBounceWindow", {.bounceWindow = 300'000'001}},
                    WrongFigure{"ShortBounceWindow", {.bounceWindow = 299'999'999}},
                    WrongFigure{"LongEchoWindow", {.echoWindow = 500'000'001}},
                    WrongFigure{"ShortEchoWindow", {.echoWindow = 490'000'000}},
                    WrongFigure{"PollInterval", {.pollInterval = 1'000'000'001}}),
    [](const auto& info) { return info.param.name; });

// Each of these turns breaks one invariant.

const char* const drop = "jabra: Jabra input volume 0.000000 -> muted=true selfInitiated=false";
const char* const rise = "jabra: Jabra input volume 0.500000 -> muted=false selfInitiated=false";
const char* const echo = "jabra: Jabra input volume 0.500000 -> muted=false selfInitiated=true";
const char* const bounce = "jabra: Mute bounced back (volume reset by host) -> toggle press";
const char* const write = "jabra: Set Jabra input volume to 0.500000 (status 0)";
const char* const press = "teams-ui: Pressed Teams mic button 'Mute' -> 0";
const char* const mute = "coordinator: Mute — Teams not running";
const char* const unmute = "coordinator: Unmute — Teams not running";
const char* const toggle = "coordinator: Toggle — Teams not running";
const char* const pressedMute = "coordinator: Mute → Teams";
const char* const followed = "coordinator: Teams unmuted → Jabra";

using Records = std::vector<std::string>;

TEST(CallInvariantsTest, AcceptsACall) {
  CallInvariants invariants;
  EXPECT_EQ(invariants.check(1'000ms, {drop}), std::nullopt);
  EXPECT_EQ(invariants.check(1'300ms, {press, pressedMute}), std::nullopt);
  EXPECT_EQ(invariants.check(2'000ms, {rise, unmute}), std::nullopt);
  EXPECT_EQ(invariants.check(3'000ms, {drop}), std::nullopt);
  EXPECT_EQ(invariants.check(3'300ms, {rise, bounce, toggle}), std::nullopt);
  EXPECT_EQ(invariants.check(4'000ms, {write, followed}), std::nullopt);
  EXPECT_EQ(invariants.check(4'499ms, {echo}), std::nullopt);
  EXPECT_EQ(invariants.check(4'500ms, {rise}), std::nullopt);
}

TEST(CallInvariantsTest, RefusesOneTurn) {
  for (const Records& records : {Records{mute},
                                 Records{drop, mute},
                                 Records{unmute},
                                 Records{drop, unmute},
                                 Records{toggle},
                                 Records{rise, toggle},
                                 Records{rise, bounce, toggle},
                                 Records{rise, bounce},
                                 Records{rise, unmute, unmute},
                                 Records{rise, rise},
                                 Records{press},
                                 Records{press, rise},
                                 Records{rise, press, unmute},
                                 Records{write},
                                 Records{write, unmute},
                                 Records{followed},
                                 Records{echo},
                                 Records{rise, "coordinator: Unmute"},
                                 Records{"coordinator: Mute → teams"},
                                 Records{rise, write, followed},
                                 Records{drop, bounce, toggle}}) {
    EXPECT_NE(CallInvariants().check(1'000ms, records), std::nullopt)
        << testing::PrintToString(records);
  }
}

TEST(CallInvariantsTest, RefusesAMuteAtAnotherTimeOrTwice) {
  for (const auto time : {1'299ms, 1'301ms}) {
    CallInvariants invariants;
    invariants.check(1'000ms, {drop});
    EXPECT_NE(invariants.check(time, {mute}), std::nullopt);
  }
  CallInvariants invariants;
  invariants.check(1'000ms, {drop});
  EXPECT_EQ(invariants.check(1'300ms, {mute}), std::nullopt);
  EXPECT_NE(invariants.check(1'300ms, {mute}), std::nullopt);
}

TEST(CallInvariantsTest, RefusesAMuteAfterAToggleOfTheSameDrop) {
  CallInvariants invariants;
  invariants.check(1'000ms, {drop});
  EXPECT_EQ(invariants.check(1'100ms, {rise, bounce, toggle}), std::nullopt);
  EXPECT_NE(invariants.check(1'300ms, {mute}), std::nullopt);
}

TEST(CallInvariantsTest, RefusesAToggleAfterTheWindow) {
  CallInvariants invariants;
  invariants.check(1'000ms, {drop});
  EXPECT_NE(invariants.check(1'301ms, {rise, bounce, toggle}), std::nullopt);
}

TEST(CallInvariantsTest, RefusesAnEchoOutsideItsWindowAndAPressInside) {
  CallInvariants invariants;
  invariants.check(1'000ms, {write, followed});
  EXPECT_NE(invariants.check(1'499ms, {rise}), std::nullopt);
  EXPECT_NE(invariants.check(1'500ms, {echo}), std::nullopt);
  EXPECT_NE(invariants.check(1'499ms, {echo, unmute}), std::nullopt);
}

}  // namespace
}  // namespace hushbox
