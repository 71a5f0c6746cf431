#include "tests/scenarios/HiddenState.h"

#include <algorithm>
#include <chrono>

namespace hushbox {

void HiddenState::append(const MuteCoordinator& coordinator, Instant now, std::string& to) {
  using namespace std::chrono_literals;
  const JabraMonitor& jabra = coordinator.jabra_;
  to += std::to_string(std::min<std::chrono::nanoseconds>(now - jabra.lastSelfChange_, 1s).count());
  to += '/' + std::to_string(jabra.restoreVolume_);
  to += jabra.pendingMute_ ? 'p' : '-';
  to +=
      std::to_string(std::max<std::chrono::nanoseconds>(coordinator.nextSearch_ - now, 0s).count());
  to += ';';
}

AudioObjectID HiddenState::deviceOf(const MuteCoordinator& coordinator) {
  return coordinator.jabra_.deviceID_.value_or(0);
}

}  // namespace hushbox
