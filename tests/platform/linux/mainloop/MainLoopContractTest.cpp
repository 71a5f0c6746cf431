#include "tests/contract/MainLoopContract.h"

#include <thread>

#include "platform/linux/mainloop/GLibMainLoop.h"
#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

class GLibMainLoopDriver final : public MainLoopDriver {
 public:
  MainLoop& loop() override { return loop_; }
  void keepBusy(TimeInterval span) override { std::this_thread::sleep_for(span); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  GLibMainLoop loop_;
};

INSTANTIATE_TEST_SUITE_P(Linux, MainLoopContract, driverFactory<MainLoopDriver>([] {
                           return std::make_unique<GLibMainLoopDriver>();
                         }));

}  // namespace
}  // namespace hushbox
