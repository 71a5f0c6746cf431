#include "platform/simulated/SimulatedLoginItem.h"
#include "tests/contract/LoginItemContract.h"

namespace hushbox {
namespace {

class SimulatedLoginItemDriver final : public LoginItemDriver {
 public:
  LoginItem& loginItem() override { return item_; }
  void refuseChanges() override {
    item_.setRefusesRegistration(true);
    item_.setRefusesUnregistration(true);
  }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return loop_.advanceUntil(condition, limit);
  }

 private:
  Journal journal_;
  SimulatedMainLoop loop_{journal_};
  SimulatedLoginItem item_{journal_, loop_};
};

INSTANTIATE_TEST_SUITE_P(Simulated, LoginItemContract, driverFactory<LoginItemDriver>([] {
                           return std::make_unique<SimulatedLoginItemDriver>();
                         }));

}  // namespace
}  // namespace hushbox
