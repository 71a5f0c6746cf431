#include "headset/JabraMonitor.h"

#include <cstdint>
#include <vector>

#include "platform/MainLoop.h"
#include "platform/Platform.h"
#include "support/Log.h"
#include "support/Text.h"

namespace hushbox {
namespace {

constexpr Log log{"jabra"};

/// A device is the speakerphone if its name contains this.
constexpr std::string_view nameMatch = "Jabra";

/// How long a drop to zero must last to count as a mute. Calling programs that restore the volume
/// do so well within this time.
constexpr TimeInterval bounceWindow{0.3};

/// For how long after our own write a volume change counts as its echo.
constexpr std::chrono::milliseconds selfChangeWindow{500};

}  // namespace

JabraMonitor::JabraMonitor() {
  deviceListListener_ = platform().audio.addPropertyListener(
      audio::systemObject, audio::deviceList, lifetime_.weakly([this] { attach(); }));
  attach();
}

void JabraMonitor::setMuted(bool muted) {
  if (!deviceID_) return;
  if (isMuted() == muted) return;
  float level = restoreVolume_;
  if (muted) {
    if (const auto volume = inputVolume(); volume && *volume > 0.0F) restoreVolume_ = *volume;
    level = 0.0F;
  }
  // Set before the write, so that the notification that it causes falls inside the window.
  lastSelfChange_ = platform().mainLoop.now();
  isMuted_ = muted;
  const AudioStatus status =
      platform().audio.setPropertyData(*deviceID_, audio::inputVolume, sizeof level, &level);
  log.info("Set Jabra input volume to %f (status %d)", level, status);
}

void JabraMonitor::attach() {
  const auto found = findJabraInput();
  if (!found) {
    if (!deviceID_) return;
    detach();
    deviceName_ = std::nullopt;
    isMuted_ = std::nullopt;
    isInCall_ = false;
    log.info("Jabra input not present");
    return;
  }
  if (found == deviceID_) return;
  detach();
  deviceID_ = found;
  deviceName_ = name(*found);
  if (const auto volume = inputVolume()) {
    isMuted_ = *volume == 0.0F;
    if (*volume > 0.0F) restoreVolume_ = *volume;
  }
  volumeListener_ = platform().audio.addPropertyListener(
      *found, audio::inputVolume, lifetime_.weakly([this] { volumeChanged(); }));
  isInCall_ = isRunning();
  runningListener_ = platform().audio.addPropertyListener(
      *found, audio::runningSomewhere, lifetime_.weakly([this] { runningChanged(); }));
  log.info("Attached to %{public}s (id %u)", deviceName().value_or("?"), *found);
}

void JabraMonitor::detach() {
  if (deviceID_) {
    AudioHardware& hardware = platform().audio;
    if (volumeListener_) {
      hardware.removePropertyListener(*deviceID_, audio::inputVolume, std::move(volumeListener_));
    }
    if (runningListener_) {
      hardware.removePropertyListener(*deviceID_, audio::runningSomewhere,
                                      std::move(runningListener_));
    }
  }
  deviceID_ = std::nullopt;
  volumeListener_ = {};
  runningListener_ = {};
}

std::optional<AudioObjectID> JabraMonitor::findJabraInput() const {
  AudioHardware& hardware = platform().audio;
  std::uint32_t size = 0;
  // Both statuses are ignored: a failed read leaves an empty list or zeros, which match no device.
  hardware.getPropertyDataSize(audio::systemObject, audio::deviceList, size);
  std::vector<AudioObjectID> devices(size / sizeof(AudioObjectID));
  size = static_cast<std::uint32_t>(devices.size() * sizeof(AudioObjectID));
  hardware.getPropertyData(audio::systemObject, audio::deviceList, size, devices.data());
  for (const AudioObjectID device : devices) {
    if (text::contains(name(device), nameMatch) &&
        hardware.hasProperty(device, audio::inputVolume)) {
      return device;
    }
  }
  return std::nullopt;
}

std::string JabraMonitor::name(AudioObjectID device) const {
  std::string text;
  const AudioStatus status = platform().audio.getPropertyText(device, audio::deviceName, text);
  return status == audio::noError ? text : std::string();
}

std::optional<float> JabraMonitor::inputVolume() const {
  float volume = 0;
  std::uint32_t size = sizeof volume;
  const AudioStatus status =
      platform().audio.getPropertyData(*deviceID_, audio::inputVolume, size, &volume);
  if (status != audio::noError) return std::nullopt;
  return volume;
}

bool JabraMonitor::isRunning() const {
  std::uint32_t running = 0;
  std::uint32_t size = sizeof running;
  const AudioStatus status =
      platform().audio.getPropertyData(*deviceID_, audio::runningSomewhere, size, &running);
  return status == audio::noError && running != 0;
}

void JabraMonitor::volumeChanged() {
  if (!deviceID_) return;
  const auto volume = inputVolume();
  if (!volume) return;
  // Our own writes count too, so that unmuting restores the level that was set last.
  if (*volume > 0.0F) restoreVolume_ = *volume;
  const bool selfInitiated = platform().mainLoop.now() - lastSelfChange_ < selfChangeWindow;
  log.info("Jabra input volume %f -> muted=%{bool}d selfInitiated=%{bool}d", *volume,
           *volume == 0.0F, selfInitiated);
  if (selfInitiated) return;
  if (*volume == 0.0F) {
    droppedToZero();
  } else {
    cameBack();
  }
}

void JabraMonitor::droppedToZero() {
  if (isMuted() == true) return;
  // A second drop does not restart the window.
  if (pendingMute_) return;
  pendingMute_.emplace(lifetime_.weakly([this] {
    pendingMute_ = std::nullopt;
    isMuted_ = true;
    raise(ButtonEvent::muted);
  }));
  platform().mainLoop.mainAsyncAfter(bounceWindow, *pendingMute_);
}

void JabraMonitor::cameBack() {
  if (pendingMute_) {
    pendingMute_->cancel();
    pendingMute_ = std::nullopt;
    log.info("Mute bounced back (volume reset by host) -> toggle press");
    raise(ButtonEvent::toggled);
  } else if (isMuted() != false) {
    isMuted_ = false;
    raise(ButtonEvent::unmuted);
  }
}

void JabraMonitor::runningChanged() {
  if (!deviceID_) return;
  const bool running = isRunning();
  if (running == isInCall()) return;
  isInCall_ = running;
  log.info("Jabra mic in use -> %{bool}d", running);
  if (running && onCallStarted) onCallStarted();
}

void JabraMonitor::raise(ButtonEvent event) const {
  if (onButton) onButton(event);
}

}  // namespace hushbox
