#include "coordinator/MuteCoordinator.h"

#include <cstdlib>

#include "app/LuchadorArt.h"
#include "notify/Notifier.h"
#include "platform/Locale.h"
#include "platform/MainLoop.h"
#include "platform/Platform.h"
#include "support/Log.h"
#include "teams/TeamsUI.h"

namespace hushbox {
namespace {

constexpr Log log{"coordinator"};

constexpr TimeInterval pollInterval{1.0};

/// How long the poll pauses after a failed read of Teams: a search of its tree is expensive.
constexpr std::chrono::seconds searchPause{5};

/// In percent; a call that starts below this level causes a warning.
constexpr std::int64_t lowBatteryThreshold = 30;

struct Action {
  std::string verb;
  std::optional<bool> wanted;
};

Action actionFor(ButtonEvent event) {
  switch (event) {
    case ButtonEvent::muted:
      return {"Mute", true};
    case ButtonEvent::unmuted:
      return {"Unmute", false};
    case ButtonEvent::toggled:
      break;
  }
  return {"Toggle", std::nullopt};
}

std::string statusFor(TeamsUI::Result result) {
  switch (result) {
    case TeamsUI::Result::pressed:
      return " → Teams";
    case TeamsUI::Result::alreadySynced:
      return " — Teams already in sync";
    case TeamsUI::Result::notTrusted:
      return " — grant Accessibility to Hushbox";
    case TeamsUI::Result::teamsNotRunning:
      return " — Teams not running";
    case TeamsUI::Result::noMeeting:
      break;
  }
  return " — no Teams meeting found";
}

}  // namespace

MuteCoordinator::MuteCoordinator() {
  jabra_.onButton = lifetime_.weakly([this](ButtonEvent event) { jabraButtonPressed(event); });
  jabra_.onCallStarted = lifetime_.weakly([this] { callStarted(); });
  Notifier::requestAuthorization();
  pollTimer_ = platform().mainLoop.scheduleRepeating(
      pollInterval, [poll = lifetime_.weakly([this] { pollTeams(); })] {
        // On any other thread the poll would be a data race.
        if (!platform().mainLoop.isMainThread()) std::abort();
        poll();
      });
  const auto announce = lifetime_.weakly([this] { objectWillChange.send(); });
  cancellables_.push_back(jabra_.objectWillChange.subscribe(announce));
  cancellables_.push_back(battery_->objectWillChange.subscribe(announce));
}

bool MuteCoordinator::isMuted() const {
  return teamsMuted().value_or(jabra_.isMuted().value_or(false));
}

Image MuteCoordinator::menuBarIcon() const {
  std::optional<Color> tint;
  if (jabra_.isInCall()) tint = isMuted() ? Color::systemRed : Color::systemGreen;
  return LuchadorArt::menuBarImage(isMuted(), jabra_.deviceName().has_value(), tint);
}

void MuteCoordinator::jabraButtonPressed(ButtonEvent event) {
  const Action action = actionFor(event);
  const TeamsUI::Result result = TeamsUI::setMuted(action.wanted);
  if (result == TeamsUI::Result::pressed) {
    if (action.wanted) {
      teamsMuted_ = action.wanted;
    } else if (const auto before = teamsMuted()) {
      teamsMuted_ = !*before;
    }
  }
  note(action.verb + statusFor(result));
}

void MuteCoordinator::pollTeams() {
  if (!jabra_.isInCall()) {
    teamsMuted_ = std::nullopt;
    return;
  }
  if (platform().mainLoop.now() < nextSearch_) return;
  const auto state = TeamsUI::currentMuteState();
  if (!state) {
    teamsMuted_ = std::nullopt;
    nextSearch_ = platform().mainLoop.now() + searchPause;
    return;
  }
  if (teamsMuted() == state) return;
  teamsMuted_ = state;
  if (jabra_.isMuted() == state) return;
  jabra_.setMuted(*state);
  note(*state ? "Teams muted → Jabra" : "Teams unmuted → Jabra");
}

void MuteCoordinator::callStarted() {
  battery_->refresh(lifetime_.weakly([this] { warnOfLowBattery(); }));
}

void MuteCoordinator::warnOfLowBattery() {
  const auto level = battery_->level();
  if (!level || *level >= lowBatteryThreshold) return;
  if (battery_->isCharging()) return;
  Notifier::post("Jabra battery low: " + std::to_string(*level) + "%",
                 "Your Speak2 75 is under " + std::to_string(lowBatteryThreshold) +
                     "%. Plug it in before the call runs long.");
  note("Call started — battery " + std::to_string(*level) + "%, notified");
}

void MuteCoordinator::note(const std::string& message) {
  log.info("%{public}s", message);
  lastEvent_ = platform().locale.shortTime() + "  " + message;
}

}  // namespace hushbox
