#include <memory>

#include "platform/linux/accessibility/AtspiAccessibilityTree.h"
#include "rehearsal/Desk.h"
#include "tests/contract/AccessibilityContract.h"

namespace hushbox {
namespace {

class AtspiDriver final : public AccessibilityDriver {
 public:
  AccessibilityTree& tree() override { return tree_; }
  Workspace& workspace() override { return tree_.workspace(); }
  Instant now() override {
    return std::chrono::time_point_cast<Instant::duration>(
        Instant{std::chrono::steady_clock::now().time_since_epoch()});
  }
  void openMeeting(bool muted) override {
    rehearsal::MeetingPage::Options options;
    options.muted = muted;
    options.labelDelay = labelDelay_;
    meeting_ = std::make_unique<rehearsal::MeetingPage>(desk_.browser(), options);
  }
  void leaveMeeting() override { meeting_->leaveCall(); }
  void quit() override { desk_.browser().kill(); }
  bool isMuted() override { return meeting_->isMuted(); }
  std::size_t pressCount() override { return meeting_->presses().size(); }
  void setMuted(bool muted) override {
    if (meeting_->isMuted() != muted) meeting_->clickMicrophone();
  }
  bool delayLabel(TimeInterval delay) override {
    labelDelay_ = std::chrono::ceil<rehearsal::Milliseconds>(delay);
    return true;
  }
  void freeze() override { desk_.browser().freeze(); }
  void thaw() override { desk_.browser().thaw(); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  static rehearsal::Desk::Options options() {
    rehearsal::Desk::Options options;
    options.audio.reset();
    return options;
  }

  rehearsal::Desk desk_{options()};
  AtspiAccessibilityTree tree_;
  rehearsal::Milliseconds labelDelay_{0};
  std::unique_ptr<rehearsal::MeetingPage> meeting_;
};

INSTANTIATE_TEST_SUITE_P(Linux, AccessibilityContract, driverFactory<AccessibilityDriver>([] {
                           return std::make_unique<AtspiDriver>();
                         }));

}  // namespace
}  // namespace hushbox
