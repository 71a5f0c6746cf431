#include "platform/simulated/SimulatedTeams.h"

#include <algorithm>
#include <utility>

namespace hushbox {
namespace {

SimulatedElement::Attributes roleAndTitle(const char* role, const char* title) {
  return {{"AXRole", std::string(role)}, {"AXTitle", std::string(title)}};
}

}  // namespace

void SimulatedTeams::launch(std::string bundleIdentifier, std::int32_t processIdentifier) {
  processIdentifier_ = processIdentifier;
  application_ = tree_.launch(processIdentifier);
  application_->append("chat", roleAndTitle("AXWindow", "Chat | Microsoft Teams"));
  workspace_.launch({std::move(bundleIdentifier), processIdentifier});
}

void SimulatedTeams::quit() {
  tree_.quit(processIdentifier_);
  workspace_.quit(processIdentifier_);
  application_ = meeting_ = microphone_ = nullptr;
}

void SimulatedTeams::joinMeeting(bool muted) {
  if (!application_) launch();
  leaveMeeting();
  meeting_ = application_->append("meeting", roleAndTitle("AXWindow", "Meeting | Microsoft Teams"));
  const auto toolbar = meeting_->append("toolbar", roleAndTitle("AXToolbar", "Meeting controls"));
  toolbar->append("camera", {{"AXRole", std::string("AXButton")},
                             {"AXDescription", std::string("Turn camera on (⌘+Shift+O)")},
                             {"AXDOMIdentifier", std::string("video-button")}});
  microphone_ = toolbar->append(
      "microphone",
      {{"AXRole", std::string("AXButton")}, {"AXDOMIdentifier", std::string("microphone-button")}});
  microphone_->perform = [this](std::string_view action) { return press(action); };
  setMuted(muted);
}

void SimulatedTeams::leaveMeeting() {
  if (meeting_ && application_) application_->removeChild(meeting_);
  meeting_ = microphone_ = nullptr;
}

void SimulatedTeams::setMuted(bool muted) {
  muted_ = muted;
  if (microphone_) {
    microphone_->attributes["AXDescription"] = std::string(muted ? unmuteLabel : muteLabel);
  }
}

AccessibilityError SimulatedTeams::press(std::string_view action) {
  if (action != "AXPress") return accessibility::actionUnsupported;
  if (pressStatus_ != accessibility::success) return pressStatus_;
  ++pressCount_;
  const TimeInterval wait = std::min(pressDuration_, tree_.messagingTimeout(processIdentifier_));
  loop_.sleep(wait);
  const TimeInterval rest = pressDuration_ - wait + pressLatency_.value_or(TimeInterval{});
  if (pressLatency_ || rest > TimeInterval{}) {
    loop_.after(rest, [this] { setMuted(!muted_); });
  } else {
    setMuted(!muted_);
  }
  return accessibility::success;
}

}  // namespace hushbox
