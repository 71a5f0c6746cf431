#include "tests/contract/MainLoopContract.h"

#include "platform/macos/RunLoopMainLoop.h"
#include "tests/platform/macos/MacScope.h"

namespace hushbox {
namespace {

class RunLoopMainLoopDriver final : public MainLoopDriver {
 public:
  MainLoop& loop() override { return loop_; }
  void keepBusy(TimeInterval span) override { doubles::keepBusy(span); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return doubles::runUntil(condition, limit);
  }

 private:
  MacScope scope_;
  RunLoopMainLoop loop_;
};

INSTANTIATE_TEST_SUITE_P(Mac, MainLoopContract, driverFactory<MainLoopDriver>([] {
                           return std::make_unique<RunLoopMainLoopDriver>();
                         }));

}  // namespace
}  // namespace hushbox
