#include "tests/linux/CallFixture.h"

#include <algorithm>

#include "rehearsal/Waiting.h"

namespace hushbox {

using rehearsal::patience;
using rehearsal::waitUntil;

void KeptLog::write(std::string_view, std::string_view category, LogLevel, std::string_view text) {
  const std::lock_guard lock(mutex_);
  lines_.push_back(std::string(category) + ": " + std::string(text));
}

std::size_t KeptLog::count(const std::string& line) const {
  const std::lock_guard lock(mutex_);
  return static_cast<std::size_t>(std::count(lines_.begin(), lines_.end(), line));
}

std::string KeptLog::text() const {
  const std::lock_guard lock(mutex_);
  std::string all;
  for (const std::string& line : lines_) all += line + "\n";
  return all;
}

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
  if (HasFailure() && program) ADD_FAILURE() << "the program logged:\n" << program->log.text();
  program.reset();
  call.reset();
  if (damaged_) return;
  if (meeting) meeting->close();
  if (desk_ && sound().hasSpeakerphone()) sound().unplugSpeakerphone();
}

}  // namespace hushbox
