#include "tests/contract/AccessibilityContract.h"

#include "platform/macos/AXAccessibilityTree.h"
#include "platform/macos/NSWorkspaceApplications.h"
#include "platform/macos/RunLoopMainLoop.h"
#include "tests/platform/macos/MacScope.h"
#include "tests/platform/macos/MacTeams.h"

namespace hushbox {
namespace {

class AXAccessibilityTreeDriver final : public AccessibilityDriver {
 public:
  AccessibilityTree& tree() override { return tree_; }
  Workspace& workspace() override { return workspace_; }
  Instant now() override { return RunLoopMainLoop().now(); }
  void openMeeting(bool muted) override { teams_.joinMeeting(muted); }
  void leaveMeeting() override { teams_.leaveMeeting(); }
  void quit() override { teams_.quit(); }
  bool isMuted() override { return teams_.isMuted(); }
  std::size_t pressCount() override { return teams_.pressCount(); }
  void setMuted(bool muted) override { teams_.setMuted(muted); }
  bool delayLabel(TimeInterval delay) override {
    teams_.setLabelDelay(delay);
    return true;
  }
  TimeInterval maxPressWait() override { return TimeInterval(0.5); }
  void freeze() override { doubles::axFrozen = true; }
  void thaw() override { doubles::axFrozen = false; }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return doubles::runUntil(condition, limit);
  }

 private:
  MacScope scope_;
  AXAccessibilityTree tree_;
  NSWorkspaceApplications workspace_;
  MacTeams teams_;
};

INSTANTIATE_TEST_SUITE_P(Mac, AccessibilityContract, driverFactory<AccessibilityDriver>([] {
                           return std::make_unique<AXAccessibilityTreeDriver>();
                         }));

}  // namespace
}  // namespace hushbox
