#include "battery/BatteryReading.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hushbox {
namespace {

using namespace std::string_literals;
using Reading = std::optional<BatteryReading>;

constexpr std::optional<BatteryReading> noReading;

Reading reading(std::int64_t level, bool charging) {
  return BatteryReading{level, charging};
}

Reading parse(std::string_view output) {
  return parseBatteryReading(output, "Jabra");
}

struct Case {
  std::string line;
  Reading expected;
};

void expectReadings(const std::vector<Case>& cases) {
  for (const Case& one : cases) {
    const Reading got = parse(one.line);
    EXPECT_EQ(got.has_value(), one.expected.has_value()) << one.line;
    if (!got || !one.expected) continue;
    EXPECT_EQ(got->level, one.expected->level) << one.line;
    EXPECT_EQ(got->charging, one.expected->charging) << one.line;
  }
}

TEST(BatteryReadingTest, ParsesTheHeadsetsLineOfAFullReport) {
  const std::string report =
      "Now drawing from 'AC Power'\n"
      " -InternalBattery-0 (id=4522083)\t80%; charging; 0:45 remaining present: true\n"
      " -Jabra Speak2 75 (id=1234567)\t62%; discharging present: true\n"
      " -Magic Mouse (id=7654321)\t15%; discharging present: true\n";
  EXPECT_EQ(parse(report), reading(62, false));
}

TEST(BatteryReadingTest, StateWordDecidesWhetherItIsCharging) {
  expectReadings({{"Jabra 62%; discharging", reading(62, false)},
                  {"Jabra 100%; charged", reading(100, true)},
                  {"Jabra 100%; discharging", reading(100, false)},
                  {"Jabra 45%; AC attached", reading(45, true)},
                  {"Jabra 45%; charging", reading(45, true)},
                  {"Jabra 45%; Charging", reading(45, true)},
                  {"Jabra 45%; CHARGED", reading(45, true)},
                  {"Jabra 45%; ac", reading(45, true)},
                  {"Jabra 45%; finishing charge", reading(45, false)},
                  {"Jabra 45%; not charging", reading(45, false)},
                  {"Jabra 45%; chargingly", reading(45, false)},
                  {"Jabra 45%; charge", reading(45, false)},
                  {"Jabra 45%; acc", reading(45, false)},
                  {"Jabra 45%; charged, full", reading(45, false)},
                  {"Jabra 45%; full", reading(45, false)},
                  {"Jabra 45%; -charging", reading(45, false)},
                  {"Jabra 45%; recharged", reading(45, false)}});
}

TEST(BatteryReadingTest, StateWordEndsAtASemicolonOrWhiteSpace) {
  expectReadings({{"Jabra 50%;charging;", reading(50, true)},
                  {"Jabra 50%; charging; 0:45 remaining", reading(50, true)},
                  {"Jabra 50%; charging\tpresent", reading(50, true)},
                  {"Jabra 50%; charging\r", reading(50, true)},
                  {"Jabra 50%; charging\u3000x", reading(50, true)},
                  {"Jabra 50%; charging, slowly", reading(50, false)},
                  {"Jabra 50%; charging\u200B", reading(50, false)}});
}

TEST(BatteryReadingTest, WhiteSpaceBeforeTheStateWordIsOptional) {
  expectReadings({{"Jabra 50%;charged", reading(50, true)},
                  {"Jabra 50%;   charged", reading(50, true)},
                  {"Jabra 50%; \t\f\rcharged", reading(50, true)},
                  {"Jabra 50%;\u00A0\u2003\u2028\u2029\u3000charged", reading(50, true)}});
}

TEST(BatteryReadingTest, NextLineAndVerticalTabAreNotWhiteSpace) {
  expectReadings({{"Jabra 50%;\u0085charging", reading(50, false)},
                  {"Jabra 50%;\vcharging", reading(50, false)},
                  {"Jabra 50%; charging\u0085", reading(50, false)}});
}

TEST(BatteryReadingTest, ReturnsNulloptWithoutAStateWord) {
  expectReadings({{"Jabra 50%;", noReading},
                  {"Jabra 50%; ", noReading},
                  {"Jabra 50%;;charging", noReading},
                  {"Jabra 50%; ; charging", noReading}});
}

TEST(BatteryReadingTest, LevelMustBeDirectlyBeforePercentAndSemicolon) {
  expectReadings({{"Jabra 45 %; charging", noReading},
                  {"Jabra 45% ; charging", noReading},
                  {"Jabra 45%, charging", noReading},
                  {"Jabra 45; charging", noReading},
                  {"Jabra %; charging", noReading},
                  {"Jabra charging", noReading},
                  {"Jabra", noReading},
                  {"Jabra 45%", noReading},
                  {"Jabra 45", noReading},
                  {"Jabra x45%; charging", reading(45, true)},
                  {"Jabra -45%; charging", reading(45, true)},
                  {"Jabra 4.5%; charging", reading(5, true)},
                  {"7%; charging Jabra", reading(7, true)},
                  {"Jabra45%;charging", reading(45, true)}});
}

TEST(BatteryReadingTest, LevelIsReturnedAsPrinted) {
  expectReadings({{"Jabra 0%; charging", reading(0, true)},
                  {"Jabra 7%; charging", reading(7, true)},
                  {"Jabra 007%; charging", reading(7, true)},
                  {"Jabra 250%; discharging", reading(250, false)},
                  {"Jabra 9223372036854775807%; x", reading(9223372036854775807, false)},
                  {"Jabra 00000000000000000000000042%; x", reading(42, false)}});
}

TEST(BatteryReadingTest, ReturnsNulloptForALevelBeyond64Bits) {
  expectReadings({{"Jabra 9223372036854775808%; charging", noReading},
                  {"Jabra 99999999999999999999999999999%; charging", noReading},
                  // It was the leftmost match, so later ones are not tried.
                  {"Jabra 9223372036854775808%; charging 50%; charging", noReading}});
}

TEST(BatteryReadingTest, ReturnsNulloptForDigitsOfAnotherScript) {
  expectReadings({{"Jabra \u0664\u0665%; charging", noReading},
                  {"Jabra \uFF14\uFF15%; charging", noReading},
                  {"Jabra 4\u0665%; charging", noReading},
                  {"Jabra \U0001D7D2\U0001D7D3%; charging", noReading},
                  {"Jabra \U0001D7D25%; charging", noReading},
                  {"Jabra \u06645%; charging 60%; charging", noReading},
                  // These are not decimal digits, so the match starts after them.
                  {"Jabra \u00B2\u00BD5%; charging", reading(5, true)},
                  {"Jabra \u00B25%; charging", reading(5, true)},
                  {"Jabra \u216045%; charging", reading(45, true)}});
}

TEST(BatteryReadingTest, LeftmostMatchInTheLineWins) {
  expectReadings({{"Jabra Speak2 75 (id=12) 62%; discharging", reading(62, false)},
                  {"Jabra 10%; charging 20%; discharging", reading(10, true)},
                  {"Jabra 10% 20%; charging", reading(20, true)},
                  {"Jabra 10%;; 20%; charging", reading(20, true)},
                  {"Jabra 10%; 20%; charging", reading(10, false)},
                  {"Jabra 1%2%3%; charging", reading(3, true)}});
}

TEST(BatteryReadingTest, FirstLineWithTheNameDecides) {
  EXPECT_EQ(parse("Jabra Link\nJabra Speak2 75 62%; charging\n"), noReading);
  EXPECT_EQ(parse("Jabra 45 %; charging\nJabra 62%; charging\n"), noReading);
  EXPECT_EQ(parse("Jabra \u0664%; charging\nJabra 62%; charging\n"), noReading);
  EXPECT_EQ(parse("Jabra 10%; charging\nJabra 62%; discharging\n"), reading(10, true));
  EXPECT_EQ(parse("Mouse 5%; charging\nJabra 62%; discharging\n"), reading(62, false));
}

TEST(BatteryReadingTest, ReturnsNulloptWithoutALineThatContainsTheName) {
  EXPECT_EQ(parse(""), noReading);
  EXPECT_EQ(parse("\n\n\n"), noReading);
  EXPECT_EQ(parse("Mouse 5%; charging\nKeyboard 62%; discharging\n"), noReading);
}

TEST(BatteryReadingTest, NameIsCaseSensitive) {
  EXPECT_EQ(parse("jabra 62%; charging"), noReading);
  EXPECT_EQ(parse("JABRA 62%; charging"), noReading);
  EXPECT_EQ(parse("jabra 10%; charging\nJabra 62%; charging"), reading(62, true));
}

TEST(BatteryReadingTest, NameMayBeAnywhereInTheLine) {
  EXPECT_EQ(parse("myJabraX 62%; charging"), reading(62, true));
  EXPECT_EQ(parse("62%; charging Jabra"), reading(62, true));
  EXPECT_EQ(parse("Jab ra 62%; charging"), noReading);
}

TEST(BatteryReadingTest, NameFollowedByACombiningMarkIsAnotherName) {
  EXPECT_EQ(parse("Jabra\u0301 62%; charging"), noReading);
  EXPECT_EQ(parse("Jabra\u0301 62%; charging\nJabra 50%; charging"), reading(50, true));
}

TEST(BatteryReadingTest, NameInAnotherNormalFormMatches) {
  EXPECT_EQ(parseBatteryReading("Caf\u00E9 62%; charging", "Cafe\u0301"), reading(62, true));
  EXPECT_EQ(parseBatteryReading("Cafe\u0301 62%; charging", "Caf\u00E9"), reading(62, true));
  EXPECT_EQ(parseBatteryReading("Cafe 62%; charging", "Caf\u00E9"), noReading);
}

TEST(BatteryReadingTest, CombiningMarkAfterADigitSeparatesItFromThePercentSign) {
  expectReadings({{"Jabra 45\u0301%; charging", noReading},
                  {"Jabra 45%\u0301; charging", noReading},
                  {"Jabra 45%;\u0301charging", reading(45, false)},
                  {"Jabra 45%; charging\u0301", reading(45, false)}});
}

TEST(BatteryReadingTest, LineFeedsSplitLinesAndCarriageReturnsDoNot) {
  // "\r\n" is one character, which does not split lines.
  EXPECT_EQ(parse("Mouse 5%; x\r\nJabra 62%; charging"), reading(5, false));
  EXPECT_EQ(parse("Jabra\r\n62%; charging"), reading(62, true));
  EXPECT_EQ(parse("Jabra\r62%; charging"), reading(62, true));
  EXPECT_EQ(parse("Jabra\n62%; charging"), noReading);
  EXPECT_EQ(parse("Mouse 5%; x\n\rJabra 62%; charging"), reading(62, true));
  EXPECT_EQ(parse("Mouse 5%; x\r\n\nJabra 62%; charging"), reading(62, true));
}

TEST(BatteryReadingTest, OtherLineSeparatorsDoNotSplit) {
  EXPECT_EQ(parse("Mouse 5%; x\u0085Jabra 62%; charging"), reading(5, false));
  EXPECT_EQ(parse("Mouse 5%; x\u2028Jabra 62%; charging"), reading(5, false));
  EXPECT_EQ(parse("Mouse 5%; x\fJabra 62%; charging"), reading(5, false));
}

TEST(BatteryReadingTest, EmptyLinesAndAMissingLastLineFeedDoNotMatter) {
  EXPECT_EQ(parse("\n\n\nJabra 62%; charging"), reading(62, true));
  EXPECT_EQ(parse("Mouse\n\nJabra 62%; charging\n\n"), reading(62, true));
}

TEST(BatteryReadingTest, EmptyNameMatchesTheFirstNonEmptyLine) {
  EXPECT_EQ(parseBatteryReading("\n\n5%; x\n6%; charging", ""), reading(5, false));
  EXPECT_EQ(parseBatteryReading("\n\n", ""), noReading);
}

TEST(BatteryReadingTest, MalformedBytesDoNotStopTheSearch) {
  EXPECT_EQ(parse("\xFF\xFE\x80 junk\nJabra \xC3 62%; charging\xE2\x82"), reading(62, false));
  EXPECT_EQ(parse("\xFF\xFE\x80 junk\nJabra \xC3 62%; charging \xE2\x82"), reading(62, true));
  EXPECT_EQ(parse("Jabra\xFF 62%; charging"), reading(62, true));
  EXPECT_EQ(parse("Jab\xFFra 62%; charging"), noReading);
  EXPECT_EQ(parse("Jabra 6\xFF"
                  "2%; charging"),
            reading(2, true));
  // A line feed after a truncated sequence still splits lines.
  EXPECT_EQ(parse("Mouse \xE2\x82\nJabra 62%; charging"), reading(62, true));
}

TEST(BatteryReadingTest, NulBytesAreOrdinaryCharacters) {
  EXPECT_EQ(parse("Mouse\0\nJabra\0 62%; charging"s), reading(62, true));
  EXPECT_EQ(parse("Jabra 62%; charging\0"s), reading(62, false));
}

TEST(BatteryReadingTest, NumberOfLinesIsUnlimited) {
  std::string report;
  for (int i = 0; i < 20000; ++i) report += "Mouse " + std::to_string(i) + "%; x\n";
  report += "Jabra 62%; charging\n";
  EXPECT_EQ(parse(report), reading(62, true));
}

TEST(BatteryReadingTest, ReadingsAreEqualIfLevelAndChargingAre) {
  EXPECT_EQ((BatteryReading{1, true}), (BatteryReading{1, true}));
  EXPECT_NE((BatteryReading{1, true}), (BatteryReading{2, true}));
  EXPECT_NE((BatteryReading{1, true}), (BatteryReading{1, false}));
}

}  // namespace
}  // namespace hushbox
