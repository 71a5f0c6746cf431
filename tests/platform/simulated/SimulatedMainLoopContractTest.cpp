#include <cstdint>
#include <optional>

#include "platform/simulated/SimulatedMainLoop.h"
#include "tests/contract/MainLoopContract.h"

namespace hushbox {
namespace {

class SimulatedMainLoopDriver final : public MainLoopDriver {
 public:
  explicit SimulatedMainLoopDriver(std::optional<std::uint64_t> seed = std::nullopt) {
    if (seed) loop_.shuffleTies(*seed);
  }

  MainLoop& loop() override { return loop_; }
  void keepBusy(TimeInterval span) override { loop_.sleep(span); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return loop_.advanceUntil(condition, limit);
  }

 private:
  Journal journal_;
  SimulatedMainLoop loop_{journal_};
};

INSTANTIATE_TEST_SUITE_P(Simulated, MainLoopContract, driverFactory<MainLoopDriver>([] {
                           return std::make_unique<SimulatedMainLoopDriver>();
                         }));
INSTANTIATE_TEST_SUITE_P(SimulatedShuffled, MainLoopContract, driverFactory<MainLoopDriver>([] {
                           return std::make_unique<SimulatedMainLoopDriver>(4711);
                         }));

}  // namespace
}  // namespace hushbox
