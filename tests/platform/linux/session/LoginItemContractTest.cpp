#include "tests/contract/LoginItemContract.h"

#include "platform/linux/session/AutostartLoginItem.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/RefusedFolder.h"

namespace hushbox {
namespace {

class AutostartLoginItemDriver final : public LoginItemDriver {
 public:
  LoginItem& loginItem() override { return item_; }
  void refuseChanges() override { folder_.refuse(); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  RefusedFolder folder_;
  AutostartLoginItem item_{folder_.path(), "/bin/true"};
};

INSTANTIATE_TEST_SUITE_P(Linux, LoginItemContract, driverFactory<LoginItemDriver>([] {
                           return std::make_unique<AutostartLoginItemDriver>();
                         }));

}  // namespace
}  // namespace hushbox
