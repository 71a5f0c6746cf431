#include "rehearsal/VolumeObserver.h"

#include <algorithm>
#include <cmath>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

void VolumeObserver::connect(const std::string& server) {
  disconnect();
  client_ = std::make_unique<AudioClient>(server, "Rehearsal observer");
  client_->watchSource(source_, [this](const SourceState& state) { record(state); });
}

void VolumeObserver::disconnect() {
  client_.reset();
}

std::vector<VolumeChange> VolumeObserver::history() const {
  const std::scoped_lock lock(mutex_);
  return history_;
}

void VolumeObserver::clear() {
  const std::scoped_lock lock(mutex_);
  history_.clear();
}

void VolumeObserver::onVolumeChanged(std::function<void(const VolumeChange&)> callback) {
  const std::scoped_lock lock(mutex_);
  callback_ = std::move(callback);
}

VolumeChange VolumeObserver::waitForVolume(double volume, Milliseconds deadline) const {
  constexpr double oneStep = 1.0 / PA_VOLUME_NORM;
  std::optional<VolumeChange> found;
  const auto arrived = [&] {
    const std::vector<VolumeChange> changes = history();
    const auto change = std::find_if(changes.begin(), changes.end(), [&](const auto& one) {
      return std::abs(one.volume - volume) < oneStep;
    });
    if (change != changes.end()) found = *change;
    return found.has_value();
  };
  waitUntil(arrived, deadline, "the volume " + std::to_string(volume));
  return *found;
}

void VolumeObserver::record(const SourceState& state) {
  const auto now = std::chrono::steady_clock::now();
  const std::scoped_lock lock(mutex_);
  if (last_ && last_->volume == state.volume && last_->muteSwitch == state.muteSwitch) return;
  last_ = state;
  history_.push_back({state.volume, state.muteSwitch, now});
  if (callback_) callback_(history_.back());
  wakeWaiters();
}

}  // namespace hushbox::rehearsal
