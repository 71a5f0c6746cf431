#include "tests/linux/CallFixture.h"

#include "rehearsal/Waiting.h"

namespace hushbox {

using rehearsal::patience;
using rehearsal::waitUntil;

ProgramOnDesk::ProgramOnDesk() {
  coordinator.emplace();
}

ProgramOnDesk::~ProgramOnDesk() {
  coordinator.reset();
  childProcesses.endAll();
  mainLoop.finishUtilityWork();
}

void ProgramOnDesk::waitForNote(const std::string& message) const {
  waitUntil([&] { return coordinator->lastEvent().ends_with("  " + message); }, patience,
            "the status \"" + message + "\"");
}

void CallFixture::putUp(rehearsal::AudioFlavour flavour) {
  if (!desk_ || flavour_ != flavour || damaged_) {
    desk_.reset();
    rehearsal::Desk::Options options;
    options.audio = flavour;
    desk_ = std::make_unique<rehearsal::Desk>(options);
    flavour_ = flavour;
    damaged_ = false;
  }
  sound().plugSpeakerphone();
  meeting.emplace(desk_->browser());
  call = sound().record();
  program.emplace();
  waitUntil([this] { return coordinator().jabra().isInCall() && coordinator().teamsMuted(); },
            patience, "the program to see the call and Teams");
}

void CallFixture::TearDown() {
  if (HasFailure() && program) {
    for (const std::string& line : program->log.lines) ADD_FAILURE() << "logged: " << line;
  }
  program.reset();
  call.reset();
  if (damaged_) return;
  if (meeting) meeting->close();
  if (desk_ && sound().hasSpeakerphone()) sound().unplugSpeakerphone();
}

}  // namespace hushbox
