#include "platform/simulated/SimulatedLocale.h"
#include "tests/contract/LocaleContract.h"

namespace hushbox {
namespace {

class SimulatedLocaleDriver final : public LocaleDriver {
 public:
  SimulatedLocaleDriver() { locale_.setTimeOfDay(std::chrono::hours{9} + std::chrono::minutes{5}); }

  Locale& locale() override { return locale_; }
  std::string expectedTime() override { return "09:05"; }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return loop_.advanceUntil(condition, limit);
  }

 private:
  Journal journal_;
  SimulatedMainLoop loop_{journal_};
  SimulatedLocale locale_{journal_, loop_};
};

INSTANTIATE_TEST_SUITE_P(Simulated, LocaleContract, driverFactory<LocaleDriver>([] {
                           return std::make_unique<SimulatedLocaleDriver>();
                         }));

}  // namespace
}  // namespace hushbox
