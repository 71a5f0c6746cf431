#include "support/LogFormat.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <locale>
#include <string>
#include <string_view>

#include "support/RenderedLog.h"

namespace hushbox {
namespace {

using namespace std::string_view_literals;
using log_format::matches;

std::string renderLog(std::string_view format, std::initializer_list<LogArgument> arguments) {
  return std::string(RenderedLog(format, arguments).text());
}

TEST(LogFormatTest, EachConversionTakesItsOwnKindOfArgument) {
  EXPECT_TRUE((matches<>("no argument"sv)));
  EXPECT_TRUE((matches<std::string>("%{public}s"sv)));
  EXPECT_TRUE((matches<std::string_view>("%{public}s"sv)));
  EXPECT_TRUE((matches<char[5]>("%{public}s"sv)));
  EXPECT_TRUE((matches<bool>("%{bool}d"sv)));
  EXPECT_TRUE((matches<std::int32_t>("%d"sv)));
  EXPECT_TRUE((matches<std::uint32_t>("%u"sv)));
  EXPECT_TRUE((matches<std::int64_t>("%lld"sv)));
  EXPECT_TRUE((matches<float>("%f"sv)));
  EXPECT_TRUE((matches<double>("%f"sv)));
}

TEST(LogFormatTest, ArgumentOfAnotherKindDoesNotMatch) {
  EXPECT_FALSE((matches<std::int32_t>("%{public}s"sv)));
  EXPECT_FALSE((matches<std::int32_t>("%{bool}d"sv)));
  EXPECT_FALSE((matches<bool>("%d"sv)));
  EXPECT_FALSE((matches<std::uint32_t>("%d"sv)));
  EXPECT_FALSE((matches<std::int32_t>("%u"sv)));
  EXPECT_FALSE((matches<std::int32_t>("%lld"sv)));
  EXPECT_FALSE((matches<std::int64_t>("%d"sv)));
  EXPECT_FALSE((matches<std::uint64_t>("%lld"sv)));
  EXPECT_FALSE((matches<std::int32_t>("%f"sv)));
  EXPECT_FALSE((matches<double>("%d"sv)));
  EXPECT_FALSE((matches<std::int16_t>("%d"sv)));
  EXPECT_FALSE((matches<char>("%d"sv)));
  EXPECT_FALSE((matches<void*>("%u"sv)));
}

TEST(LogFormatTest, TooFewOrTooManyArgumentsDoNotMatch) {
  EXPECT_FALSE((matches<>("%d"sv)));
  EXPECT_FALSE((matches<std::int32_t>("%d %d"sv)));
  EXPECT_FALSE((matches<std::int32_t>("none"sv)));
  EXPECT_FALSE((matches<std::int32_t, std::int32_t>("%d"sv)));
}

TEST(LogFormatTest, ArgumentsMatchInTheOrderOfTheConversions) {
  EXPECT_TRUE((matches<float, bool, std::uint32_t>("%f then %{bool}d then %u"sv)));
  EXPECT_FALSE((matches<bool, float, std::uint32_t>("%f then %{bool}d then %u"sv)));
}

TEST(LogFormatTest, UnknownConversionDoesNotMatch) {
  for (const std::string_view format : {"100%"sv, "%"sv, "%%"sv, "%s"sv, "%@"sv, "%{private}s"sv,
                                        "%{public}"sv, "%x"sv, "%ld"sv, "%.2f"sv, "% d"sv}) {
    EXPECT_FALSE((matches<>(format))) << format;
    EXPECT_FALSE((matches<std::int32_t>(format))) << format;
    EXPECT_FALSE((matches<std::string>(format))) << format;
    EXPECT_FALSE((matches<void*>(format))) << format;
  }
}

TEST(LogFormatTest, TextWithoutConversionsIsUnchanged) {
  EXPECT_EQ(renderLog("Jabra input not present", {}), "Jabra input not present");
  EXPECT_EQ(renderLog("", {}), "");
}

TEST(LogFormatTest, ConversionsAreReplacedInOrder) {
  EXPECT_EQ(renderLog("%{public}s: %d, %u, %lld, %f, %{bool}d.",
                      {"Jabra"sv, std::int64_t{-1}, std::uint64_t{2}, std::int64_t{3}, 4.5, true}),
            "Jabra: -1, 2, 3, 4.500000, true.");
}

TEST(LogFormatTest, BooleansAreWordsAndFloatingPointHasSixDecimals) {
  EXPECT_EQ(renderLog("%{bool}d%{bool}d", {true, false}), "truefalse");
  EXPECT_EQ(renderLog("%f", {0.0}), "0.000000");
  EXPECT_EQ(renderLog("%f", {static_cast<double>(0.7F)}), "0.700000");
  EXPECT_EQ(renderLog("%f", {1e-9}), "0.000000");
  EXPECT_EQ(renderLog("%f", {123456.7890125}), "123456.789012");
  EXPECT_EQ(renderLog("%f", {1e15}), "1000000000000000.000000");
}

TEST(LogFormatTest, IntegersAreDecimalUpToTheirLimits) {
  EXPECT_EQ(renderLog("%lld", {std::numeric_limits<std::int64_t>::min()}), "-9223372036854775808");
  EXPECT_EQ(renderLog("%u", {std::uint64_t{4294967295}}), "4294967295");
}

TEST(LogFormatTest, PercentSignsInsideAnArgumentAreText) {
  EXPECT_EQ(renderLog("'%{public}s' -> %d", {"50%d %{public}s"sv, std::int64_t{0}}),
            "'50%d %{public}s' -> 0");
}

TEST(LogFormatTest, TextArgumentsKeepEveryByte) {
  const std::string text("nul\0 and → and \n", 18);
  EXPECT_EQ(renderLog("<%{public}s>", {std::string_view(text)}), "<" + text + ">");
}

class CommaNumbers : public std::numpunct<char> {
 protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  std::string do_truename() const override { return "wahr"; }
};

TEST(LogFormatTest, ProcessLocaleDoesNotAffectTheLog) {
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new CommaNumbers));
  const std::string text =
      renderLog("%f %u %lld %{bool}d", {12345.5, std::uint64_t{65536}, std::int64_t{-65536}, true});
  std::locale::global(before);
  EXPECT_EQ(text, "12345.500000 65536 -65536 true");
}

TEST(LogFormatTest, TextOfAnyLengthIsWhole) {
  for (const std::size_t length : {255U, 256U, 257U, 511U, 512U, 513U, 5000U}) {
    const std::string text(length, 'x');
    EXPECT_EQ(renderLog("%{public}s", {std::string_view(text)}), text);
    EXPECT_EQ(renderLog("%{public}s%{public}s.", {std::string_view(text), "y"sv}), text + "y.");
  }
}

}  // namespace
}  // namespace hushbox
