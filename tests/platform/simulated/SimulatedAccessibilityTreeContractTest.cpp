#include "platform/simulated/SimulatedTeams.h"
#include "tests/contract/AccessibilityContract.h"

namespace hushbox {
namespace {

class SimulatedAccessibilityDriver final : public AccessibilityDriver {
 public:
  AccessibilityTree& tree() override { return tree_; }
  Workspace& workspace() override { return workspace_; }
  Instant now() override { return loop_.now(); }
  void openMeeting(bool muted) override { teams_.joinMeeting(muted); }
  void leaveMeeting() override { teams_.leaveMeeting(); }
  void quit() override { teams_.quit(); }
  bool isMuted() override { return teams_.isMuted(); }
  std::size_t pressCount() override { return teams_.pressCount(); }
  void setMuted(bool muted) override { teams_.setMuted(muted); }
  bool delayLabel(TimeInterval delay) override {
    teams_.setPressDuration(delay);
    return true;
  }
  void freeze() override { teams_.freeze(); }
  void thaw() override { teams_.thaw(); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return loop_.advanceUntil(condition, limit);
  }

 private:
  Journal journal_;
  SimulatedMainLoop loop_{journal_};
  SimulatedAccessibilityTree tree_{journal_, loop_};
  SimulatedWorkspace workspace_{journal_, loop_};
  SimulatedTeams teams_{loop_, tree_, workspace_};
};

INSTANTIATE_TEST_SUITE_P(Simulated, AccessibilityContract, driverFactory<AccessibilityDriver>([] {
                           return std::make_unique<SimulatedAccessibilityDriver>();
                         }));

}  // namespace
}  // namespace hushbox
