#include "tests/contract/ChildProcessContract.h"

#include "platform/macos/TaskChildProcessFactory.h"
#include "tests/platform/macos/MacScope.h"

namespace hushbox {
namespace {

class TaskChildProcessDriver final : public ChildProcessDriver {
 public:
  ChildProcessFactory& factory() override { return factory_; }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return doubles::runUntil(condition, limit);
  }

 private:
  MacScope scope_;
  TaskChildProcessFactory factory_;
};

INSTANTIATE_TEST_SUITE_P(Mac, ChildProcessContract, driverFactory<ChildProcessDriver>([] {
                           return std::make_unique<TaskChildProcessDriver>();
                         }));

}  // namespace
}  // namespace hushbox
