#include "platform/simulated/SimulatedMainLoop.h"
#include "platform/simulated/SimulatedUnifiedLog.h"
#include "tests/contract/UnifiedLogContract.h"

namespace hushbox {
namespace {

class SimulatedUnifiedLogDriver final : public UnifiedLogDriver {
 public:
  UnifiedLog& log() override { return log_; }
  std::vector<std::string> records() override { return journal_.lines("log"); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return loop_.advanceUntil(condition, limit);
  }

 private:
  Journal journal_;
  SimulatedMainLoop loop_{journal_};
  SimulatedUnifiedLog log_{journal_};
};

INSTANTIATE_TEST_SUITE_P(Simulated, UnifiedLogContract, driverFactory<UnifiedLogDriver>([] {
                           return std::make_unique<SimulatedUnifiedLogDriver>();
                         }));

}  // namespace
}  // namespace hushbox
