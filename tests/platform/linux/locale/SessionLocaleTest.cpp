#include "platform/linux/locale/SessionLocale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <ctime>
#include <memory>
#include <optional>

#include "tests/platform/linux/fixtures/InstalledLocales.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"

namespace hushbox {
namespace {

/// 2023-11-14, 22:05:09 in UTC, which is the time zone in these tests.
constexpr std::time_t evening = 1'700'000'000 - 13 * 60 - 20 + 5 * 60 + 9;

class SessionLocaleTest : public testing::Test {
 protected:
  SessionLocaleTest() { environment_.set("TZ", "UTC"); }
  ~SessionLocaleTest() override { tzset(); }

  std::string timeIn(const std::string& locale, std::optional<ClockStyle> desktop = std::nullopt) {
    environment_.set("LC_ALL", locale);
    return SessionLocale([desktop] { return desktop; }).shortTime(evening);
  }

  ScopedEnvironment environment_;
};

/// With the locales of these cases, compiled once for all of them, in encodings that take a second
/// to compile instead of half a minute.
class InstalledSessionLocaleTest : public SessionLocaleTest {
 protected:
  static void SetUpTestSuite() {
    locales_ = std::make_unique<InstalledLocales>();
    installed_ = locales_->install("en_US", "ISO-8859-1") &&
                 locales_->install("de_DE", "ISO-8859-1") && locales_->install("ja_JP", "EUC-JP");
  }
  static void TearDownTestSuite() { locales_.reset(); }

  void SetUp() override {
    if (!installed_) GTEST_SKIP() << "The sources of the locales are not installed.";
  }

 private:
  static inline std::unique_ptr<InstalledLocales> locales_;
  static inline bool installed_ = false;
};

TEST_F(InstalledSessionLocaleTest, HoursFollowTheLocale) {
  EXPECT_EQ(timeIn("en_US.ISO-8859-1"), "10:05 PM");
  EXPECT_EQ(timeIn("de_DE.ISO-8859-1"), "22:05");
}

TEST_F(InstalledSessionLocaleTest, DesktopSettingTakesPrecedenceWhereTheLocaleHasWordsForIt) {
  EXPECT_EQ(timeIn("en_US.ISO-8859-1", ClockStyle::twentyFourHours), "22:05");
  EXPECT_EQ(timeIn("de_DE.ISO-8859-1", ClockStyle::twelveHours), "22:05");
  EXPECT_EQ(timeIn("C", ClockStyle::twelveHours), "10:05 PM");
}

TEST_F(InstalledSessionLocaleTest, TextIsUtf8InAnyEncodingOfTheLocale) {
  EXPECT_EQ(timeIn("ja_JP.EUC-JP"), "22時05分");
  EXPECT_EQ(timeIn("ja_JP.EUC-JP", ClockStyle::twelveHours), "午後10時05分");
}

TEST_F(InstalledSessionLocaleTest, VariablesTakePrecedenceInTheOrderOfPosix) {
  const auto time = [] { return SessionLocale([] { return std::nullopt; }).shortTime(evening); };
  environment_.set("LANG", "C");
  environment_.set("LC_TIME", "nowhere");
  environment_.set("LC_ALL", "");
  EXPECT_EQ(time(), "22:05");
  environment_.set("LC_TIME", "en_US.ISO-8859-1");
  EXPECT_EQ(time(), "10:05 PM");
  environment_.set("LC_ALL", "C");
  EXPECT_EQ(time(), "22:05");
  environment_.set("LC_ALL", std::nullopt);
  environment_.set("LC_TIME", std::nullopt);
  environment_.set("LANG", "en_US.ISO-8859-1");
  EXPECT_EQ(time(), "10:05 PM");
}

TEST_F(SessionLocaleTest, LocaleThatIsNotInstalledCountsAsC) {
  EXPECT_EQ(timeIn("xx_XX.UTF-8"), "22:05");
  EXPECT_EQ(timeIn(std::string(100'000, 'x')), "22:05");
  EXPECT_EQ(timeIn("../../etc"), "22:05");
}

TEST_F(SessionLocaleTest, TimeZoneIsReadAgainEachTime) {
  SessionLocale locale([] { return std::nullopt; });
  EXPECT_EQ(locale.shortTime(evening), "22:05");
  environment_.set("TZ", "XXX-5:30");
  EXPECT_EQ(locale.shortTime(evening), "03:35");
}

TEST_F(SessionLocaleTest, LocaleOfTheProcessIsUnchanged) {
  const std::string before = std::setlocale(LC_ALL, nullptr);
  timeIn("de_DE.ISO-8859-1");
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

}  // namespace
}  // namespace hushbox
