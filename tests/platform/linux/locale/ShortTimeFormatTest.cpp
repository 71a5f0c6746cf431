#include "platform/linux/locale/ShortTimeFormat.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>

namespace hushbox {
namespace {

constexpr auto twelve = ClockStyle::twelveHours;
constexpr auto twentyFour = ClockStyle::twentyFourHours;

struct Case {
  const char* locale;
  TimeConventions conventions;
  const char* own;
  const char* inTwelve;
  const char* inTwentyFour;

  friend void PrintTo(const Case& one, std::ostream* out) { *out << one.locale; }
};

class ShortTimeFormatTest : public testing::TestWithParam<Case> {};

TEST_P(ShortTimeFormatTest, LeavesOutSecondsAndKeepsTheLocalesOrderAndWords) {
  const Case& one = GetParam();
  EXPECT_EQ(shortTimeFormat(one.conventions, std::nullopt), one.own);
  EXPECT_EQ(shortTimeFormat(one.conventions, twelve), one.inTwelve);
  EXPECT_EQ(shortTimeFormat(one.conventions, twentyFour), one.inTwentyFour);
}

// The formats of glibc's locales.
INSTANTIATE_TEST_SUITE_P(
    Locales, ShortTimeFormatTest,
    testing::Values(
        Case{"en_US", {"%r", "%I:%M:%S %p", true}, "%-I:%M %p", "%-I:%M %p", "%H:%M"},
        Case{"de_DE", {"%T", "", false}, "%H:%M", "%H:%M", "%H:%M"},
        Case{"en_GB", {"%T", "%l:%M:%S %P %Z", true}, "%H:%M", "%-I:%M %P", "%H:%M"},
        Case{
            "hi_IN", {"%I:%M:%S %p %Z", "%I:%M:%S %p %Z", true}, "%-I:%M %p", "%-I:%M %p", "%H:%M"},
        Case{
            "ar_EG", {"%Z %I:%M:%S %p", "%Z %I:%M:%S %p", true}, "%-I:%M %p", "%-I:%M %p", "%H:%M"},
        Case{"fi_FI", {"%H.%M.%S", "", true}, "%H.%M", "%-I:%M %p", "%H.%M"},
        Case{"nb_NO", {"kl. %H.%M %z", "", false}, "kl. %H.%M", "kl. %H.%M", "kl. %H.%M"},
        Case{"bg_BG", {"%k:%M:%S", "", false}, "%-H:%M", "%-H:%M", "%-H:%M"},
        Case{"fa_IR", {"%OH:%OM:%OS", "", true}, "%OH:%OM", "%-I:%M %p", "%OH:%OM"},
        Case{"ko_KR",
             {"%H시 %M분 %S초", "%p %I시 %M분 %S초", true},
             "%H시 %M분",
             "%p %-I시 %M분",
             "%H시 %M분"},
        Case{"ja_JP",
             {"%H時%M分%S秒", "%p%I時%M分%S秒", true},
             "%H時%M分",
             "%p%-I時%M分",
             "%H時%M分"},
        Case{"zh_HK",
             {"%p %I時%M分%S秒 %Z", "%p %I:%M:%S", true},
             "%p %-I時%M分",
             "%p %-I時%M分",
             "%H:%M"},
        Case{
            "sq_AL", {"%I:%M:%S.%p %Z", "%I:%M:%S.%p %Z", true}, "%-I:%M.%p", "%-I:%M.%p", "%H:%M"},
        Case{"vi_VN", {"%T", "%I:%M %p", true}, "%H:%M", "%-I:%M %p", "%H:%M"},
        Case{"ff_SN", {"%R", "", true}, "%H:%M", "%-I:%M %p", "%H:%M"},
        Case{"without words for the halves", {"%r", "", false}, "%H:%M", "%H:%M", "%H:%M"},
        Case{"C", {"%H:%M:%S", "%I:%M:%S %p", true}, "%H:%M", "%-I:%M %p", "%H:%M"}),
    [](const auto& info) {
      std::string name;
      for (const char c : std::string_view(info.param.locale)) name += c == ' ' ? '_' : c;
      return name;
    });

TEST(ShortTimeFormatTest, FormatWithoutAnHourIsNotUsed) {
  for (const char* broken : {"", "%", "%%", "%S", "at noon", "%E", "%-"})
    EXPECT_EQ(shortTimeFormat({broken, broken, true}, std::nullopt), "%H:%M") << broken;
}

TEST(ShortTimeFormatTest, RecursiveFormatsDoNoHarm) {
  EXPECT_EQ(shortTimeFormat({"%S%H%S", "", true}, std::nullopt), "%H");
  EXPECT_EQ(shortTimeFormat({"%S%S%r", "%I:%M:%S %p", true}, twelve), "%-I:%M %p");
}

TEST(ShortTimeFormatOrderTest, SecondsMayComeFirst) {
  const auto format = [](const char* time) {
    return shortTimeFormat({time, "", false}, std::nullopt);
  };
  EXPECT_EQ(format("%S %H:%M"), "%H:%M");
  EXPECT_EQ(format(":%S %H:%M"), "%H:%M");
}

}  // namespace
}  // namespace hushbox
