#include "tests/contract/ChildProcessContract.h"

#include "platform/linux/processes/SpawnedChildProcessFactory.h"
#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

class SpawnedChildProcessDriver final : public ChildProcessDriver {
 public:
  ChildProcessFactory& factory() override { return factory_; }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  SpawnedChildProcessFactory factory_{ChildProcessRules{}};
};

INSTANTIATE_TEST_SUITE_P(Linux, ChildProcessContract, driverFactory<ChildProcessDriver>([] {
                           return std::make_unique<SpawnedChildProcessDriver>();
                         }));

}  // namespace
}  // namespace hushbox
