#include "rehearsal/Desk.h"

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

template <typename Part>
Part& present(const std::unique_ptr<Part>& part, const char* what) {
  if (!part) throw DeskError(std::string("this desk has no ") + what);
  return *part;
}

}  // namespace

Desk::Desk(const Options& options)
    : session_({options.display, options.systemBus}), notifications_(session_.busAddress()) {
  if (options.applyToThisProcess) session_.applyToThisProcess();
  if (options.accessibility) {
    accessibility_ = std::make_unique<AccessibilityBus>(session_);
    accessibility_->setEnabled(true);
  }
  // The browser takes longest, so it starts up while the other servers are started.
  if (options.browser) {
    browser_ = std::make_unique<Browser>(
        session_, Browser::Options{options.headlessBrowser || !options.display, {}});
  }
  if (options.audio) audio_ = std::make_unique<AudioServer>(session_, *options.audio);
  if (options.speakerphone) audio().plugSpeakerphone();
  if (options.notifications) notificationDaemon_ = std::make_unique<NotificationDaemon>(session_);
}

Desk::~Desk() = default;

AccessibilityBus& Desk::accessibility() {
  return present(accessibility_, "accessibility bus");
}

AudioServer& Desk::audio() {
  return present(audio_, "sound server");
}

Browser& Desk::browser() {
  return present(browser_, "browser");
}

NotificationDaemon& Desk::notificationDaemon() {
  return present(notificationDaemon_, "notification daemon");
}

}  // namespace hushbox::rehearsal
