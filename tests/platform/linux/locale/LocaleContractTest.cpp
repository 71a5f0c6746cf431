#include "tests/contract/LocaleContract.h"

#include <array>
#include <ctime>

#include "platform/linux/locale/SessionLocale.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"

namespace hushbox {
namespace {

/// A session in a locale that need not be installed, on a desktop set to a 24-hour clock.
class SessionLocaleDriver final : public LocaleDriver {
 public:
  SessionLocaleDriver() { environment_.set("LC_ALL", "C.UTF-8"); }

  Locale& locale() override { return locale_; }
  std::string expectedTime() override {
    const std::time_t now = std::time(nullptr);
    std::array<char, 16> time{};
    std::strftime(time.data(), time.size(), "%H:%M", std::localtime(&now));
    return time.data();
  }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  ScopedEnvironment environment_;
  SessionLocale locale_{[] { return ClockStyle::twentyFourHours; }};
};

INSTANTIATE_TEST_SUITE_P(Linux, LocaleContract, driverFactory<LocaleDriver>([] {
                           return std::make_unique<SessionLocaleDriver>();
                         }));

}  // namespace
}  // namespace hushbox
