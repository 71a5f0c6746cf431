#include "tests/platform/macos/MacTeams.h"

#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include "tests/platform/macos/doubles/RunLoopDouble.h"

namespace hushbox {
namespace {

using Attributes = std::map<std::string, doubles::AXValue>;

doubles::AXNodeRef append(const doubles::AXNodeRef& parent, Attributes attributes) {
  auto node = std::make_shared<doubles::AXNode>();
  node->attributes = std::move(attributes);
  parent->children.push_back(node);
  return node;
}

void bury(const doubles::AXNodeRef& node) {
  node->gone = true;
  for (const auto& child : node->children) bury(child);
}

}  // namespace

void MacTeams::launch() {
  doubles::apps.push_back({"com.apple.finder", 77});
  doubles::apps.push_back({"com.microsoft.teams2", processIdentifier});
  application_ = doubles::axApplication(processIdentifier);
  application_->attributes["AXRole"] = "AXApplication";
  append(application_, {{"AXRole", "AXWindow"}, {"AXTitle", "Chat | Microsoft Teams"}});
}

void MacTeams::quit() {
  doubles::axQuit(processIdentifier);
  std::erase_if(doubles::apps, [](const auto& app) { return app.pid == processIdentifier; });
  application_ = meeting_ = microphone_ = nullptr;
}

void MacTeams::joinMeeting(bool muted) {
  if (!application_) launch();
  meeting_ =
      append(application_, {{"AXRole", "AXWindow"}, {"AXTitle", "Meeting | Microsoft Teams"}});
  const auto toolbar = append(meeting_, {{"AXRole", "AXToolbar"}});
  append(toolbar, {{"AXRole", "AXButton"},
                   {"AXDescription", "Turn camera on (⌘+Shift+O)"},
                   {"AXDOMIdentifier", "video-button"}});
  microphone_ = append(toolbar, {{"AXRole", "AXButton"}, {"AXDOMIdentifier", "microphone-button"}});
  microphone_->beforeRead = [this] { showLabel(); };
  microphone_->perform = [this](const std::string& action) { return perform(action); };
  setMuted(muted);
}

void MacTeams::leaveMeeting() {
  if (!meeting_) return;
  bury(meeting_);
  std::erase(application_->children, meeting_);
  meeting_ = microphone_ = nullptr;
}

void MacTeams::setMuted(bool muted) {
  muted_ = muted;
  labelDue_ = doubles::now();
  showLabel();
}

void MacTeams::showLabel() {
  if (!microphone_ || doubles::now() < labelDue_) return;
  microphone_->attributes["AXDescription"] = muted_ ? unmuteLabel : muteLabel;
}

std::int32_t MacTeams::perform(const std::string& action) {
  // What the accessibility interface answers to an action that it does not know.
  if (action != "AXPress") return -25206;
  if (pressStatus_) return pressStatus_;
  ++pressCount_;
  muted_ = !muted_;
  labelDue_ = doubles::now() + std::chrono::round<Instant::duration>(labelDelay_);
  showLabel();
  return 0;
}

}  // namespace hushbox
