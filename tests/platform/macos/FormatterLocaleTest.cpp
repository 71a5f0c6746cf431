#include "platform/macos/FormatterLocale.h"

#include <gmock/gmock.h>

#include "tests/contract/LocaleContract.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/MacScope.h"

namespace hushbox {
namespace {

class FormatterLocaleTest : public MacFixture {
 protected:
  FormatterLocale locale;
};

TEST_F(FormatterLocaleTest, FollowsChangesOfTheUsersSettings) {
  doubles::setShortTime("9:05\u202fPM");
  EXPECT_EQ(locale.shortTime(), "9:05\u202fPM");
  doubles::setShortTime("21:05");
  EXPECT_EQ(locale.shortTime(), "21:05");
}

TEST_F(FormatterLocaleTest, ReleasesWhatItReads) {
  const long before = doubles::liveObjects();
  EXPECT_EQ(locale.shortTime(), "9:41 AM");
  EXPECT_EQ(doubles::liveObjects(), before);
}

class FormatterLocaleDriver final : public LocaleDriver {
 public:
  FormatterLocaleDriver() { doubles::setShortTime("10:42\u202fAM"); }

  Locale& locale() override { return locale_; }
  std::string expectedTime() override { return "10:42\u202fAM"; }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return doubles::runUntil(condition, limit);
  }

 private:
  MacScope mac_;
  FormatterLocale locale_;
};

INSTANTIATE_TEST_SUITE_P(Macos, LocaleContract, driverFactory<LocaleDriver>([] {
                           return std::make_unique<FormatterLocaleDriver>();
                         }));

}  // namespace
}  // namespace hushbox
