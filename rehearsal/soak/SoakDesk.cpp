#include "rehearsal/soak/SoakDesk.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "rehearsal/DeskError.h"
#include "rehearsal/ItemMenu.h"

namespace hushbox::rehearsal {

namespace {

/// Longer than it takes the sound server to report a change and to reply to Hushbox's request.
constexpr Milliseconds deliveryTime{100};

}  // namespace

SoakDesk::SoakDesk(AudioFlavour flavour, const std::string& program)
    : desk_({.audio = flavour, .applyToThisProcess = false}),
      otherBrowser_(desk_.session(), {.profile = "other-chromium"}),
      meeting_(desk_.browser()),
      hushbox_(desk_.session(), program),
      bus_(desk_.session().busAddress()) {}

SoakState SoakDesk::see() {
  const AudioServer& sound = desk_.audio();
  SoakState state{
      .teamsMuted = meeting_.isMuted(), .presses = meeting_.presses().size(), .row = firstRow()};
  if (!sound.isRunning() || !sound.hasSpeakerphone()) return state;
  const double volume = sound.volume();
  state.isSilent = sound.muteSwitch() || volume == 0.0;
  if (!state.isSilent) state.level = std::lround(volume * 100);
  return state;
}

std::string SoakDesk::firstRow() const {
  // It owns that name on the session bus.
  return ItemMenu(bus_, "org.hushbox.Hushbox").rows().at(0).text;
}

void SoakDesk::plugIn(bool isRestored) {
  if (isRestored) {
    desk_.audio().replugSpeakerphone();
  } else {
    desk_.audio().plugSpeakerphone();
  }
}

void SoakDesk::unplug() {
  call_.reset();
  meter_.reset();
  desk_.audio().unplugSpeakerphone();
}

void SoakDesk::killSoundServer() {
  desk_.audio().kill();
  call_.reset();
  meter_.reset();
}

void SoakDesk::startSoundServer() {
  desk_.audio().restart();
  desk_.browser().restartAudioService();
}

void SoakDesk::pressButton(bool movesSwitch, long level) {
  AudioServer& sound = desk_.audio();
  if (movesSwitch) {
    sound.setMuteSwitch(!sound.muteSwitch());
  } else {
    setLevel(sound.volume() == 0.0 ? level : 0);
  }
}

SoakDesk::Drop SoakDesk::bounce(long level, Milliseconds span) {
  std::vector<pid_t> processes = desk_.audio().processes();
  processes.push_back(hushbox_.pid());
  const ProcessorWait wait(processes);
  const auto start = std::chrono::steady_clock::now();
  setLevel(0);
  letPass(span);
  setLevel(level);
  const auto maxSpan = std::chrono::steady_clock::now() - start;
  letPass(deliveryTime);
  return {maxSpan, wait.longest()};
}

void SoakDesk::setMinimised(bool isMinimised) {
  if (isMinimised_ == isMinimised) return;
  isMinimised_ = isMinimised;
  if (isMinimised) {
    meeting_.page().minimise();
  } else {
    meeting_.page().restore();
  }
}

void SoakDesk::setMeter(bool isOpen) {
  meter_ = isOpen ? desk_.audio().meter() : nullptr;
}

bool SoakDesk::openSecondMeeting() {
  // A page that is not shown gets no microphone.
  setMinimised(false);
  try {
    meeting_.record();
  } catch (const DeskError&) {
    return false;
  }
  secondMeeting_.emplace(otherBrowser_);
  setMinimised(true);
  return true;
}

void SoakDesk::closeSecondMeeting() {
  const std::size_t presses = secondMeeting_->presses().size();
  secondMeeting_->close();
  secondMeeting_.reset();
  meeting_.stopRecording();
  if (presses != 0) throw DeskError("the meeting that does not record was pressed");
}

void SoakDesk::openForeignPage() {
  foreignPage_ = desk_.browser().open(Browser::pageUrl("decoy.html"));
  foreignPage_->evaluate("document.title = 'Weekly sync | Microsoft Teams'");
}

void SoakDesk::closeForeignPage() {
  const bool isPressed = foreignPage_->evaluate("decoy.presses").get<int>() != 0;
  foreignPage_->close();
  foreignPage_.reset();
  if (isPressed) throw DeskError("a page that is not of Teams was pressed");
}

}  // namespace hushbox::rehearsal
