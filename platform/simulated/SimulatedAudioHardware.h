#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/AudioHardware.h"
#include "platform/simulated/AudioFault.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedDevice.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// Audio devices in memory that behave like a real server's: every change of a value is announced
/// to all listeners, later and from the loop. Writing the current value changes nothing.
///
/// Journal lines name the object, the property, the input and the result:
///   "size 1 device list: 8 bytes -> 0"         "get 1 device list (8 bytes): 2 3 -> 0"
///   "text 2 name: \"Jabra Speak2 75\" -> 0"    "has 2 input volume: true"
///   "get 2 input volume (4 bytes): 0.8 -> 0"   "set 2 input volume (4 bytes): 0.8 -> 0"
///   "add listener 2 input volume -> added"     "remove listener 2 input volume -> 0"
/// A status that is a four-character code prints as such ("-> !obj").
class SimulatedAudioHardware final : public AudioHardware {
 public:
  SimulatedAudioHardware(Journal& journal, SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  // Events on the desk.

  /// Plugs a device in under a new identifier, at `place` in the device list or else at its end.
  AudioObjectID plug(SimulatedDevice device, std::optional<std::size_t> place = std::nullopt);
  /// Does the same under the given identifier, which must not be plugged in but may be an old one.
  void plugAs(AudioObjectID id, SimulatedDevice device,
              std::optional<std::size_t> place = std::nullopt);
  /// Unplugs a device and removes its listeners.
  void unplug(AudioObjectID id);
  /// Reorders the device list.
  void reorder(std::vector<AudioObjectID> order);

  /// Another program, or the device itself, sets the input volume.
  void setInputVolume(AudioObjectID id, float volume);
  /// Presses the device's mute button: sets the input volume to zero, or restores the last volume
  /// above zero (full volume if there was none).
  void pressMuteButton(AudioObjectID id);
  /// A process starts or stops using the device.
  void setRunning(AudioObjectID id, bool running);
  /// Calls the property's listeners, as if its value had changed.
  void announce(AudioObjectID object, const AudioPropertyAddress& address);

  /// The device's input volume; 0 if it has none.
  float inputVolume(AudioObjectID id) const;
  std::vector<AudioObjectID> deviceList() const { return order_; }
  std::size_t listenerCount() const { return listeners_.size(); }

  // Behaviour of the server and of other programs.

  /// How long after a change the listeners are called; initially in the next turn.
  void setAnnouncementDelay(TimeInterval delay) { announcementDelay_ = delay; }
  /// Whether a call that was queued when its listener was removed still arrives; initially true.
  void setDeliversAfterRemoval(bool delivers) { deliversAfterRemoval_ = delivers; }
  /// Another program restores the input volume `delay` after it drops to zero; initially none does.
  void setPutsVolumeBackAfter(std::optional<TimeInterval> delay) { putsBackAfter_ = delay; }
  void addFault(AudioFault fault) { faults_.push_back(fault); }
  void clearFaults() { faults_.clear(); }
  /// What a read that fails leaves in its output: that byte everywhere, or that text; initially it
  /// leaves the output alone.
  void setOutputOfFailedReads(std::byte data, std::string text) {
    outputOfFailedReads_ = {data, std::move(text)};
  }

  /// Calls every listener once, now.
  void fireListenersOnce();

  bool hasProperty(AudioObjectID object, const AudioPropertyAddress& address) override;
  AudioStatus getPropertyDataSize(AudioObjectID object, const AudioPropertyAddress& address,
                                  std::uint32_t& size) override;
  AudioStatus getPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t& size, void* data) override;
  AudioStatus getPropertyText(AudioObjectID object, const AudioPropertyAddress& address,
                              std::string& text) override;
  AudioStatus setPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t size, const void* data) override;
  RegistrationToken addPropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                        std::function<void()> listener) override;
  AudioStatus removePropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                     RegistrationToken listener) override;

 private:
  struct Device {
    SimulatedDevice data;
    float volumeBeforeMute = 1;
  };
  struct Listener {
    AudioObjectID object;
    AudioPropertyAddress address;
    std::function<void()> call;
  };
  using ListenerRef = std::shared_ptr<Listener>;

  Device* find(AudioObjectID id);
  Device& require(AudioObjectID id);
  bool exists(AudioObjectID object, const AudioPropertyAddress& address);
  AudioStatus statusOf(AudioObjectID object, const AudioPropertyAddress& address);
  std::optional<AudioFault> takeFault(AudioOperation operation, AudioObjectID object,
                                      const AudioPropertyAddress& address);
  std::vector<std::byte> valueOf(AudioObjectID object, const AudioPropertyAddress& address);
  void changeVolume(AudioObjectID id, float volume);
  void putBackLater(AudioObjectID id, float volume);
  bool isInPlace(const ListenerRef& listener) const;

  Journal& journal_;
  SimulatedMainLoop& loop_;
  std::map<AudioObjectID, Device> devices_;
  std::vector<AudioObjectID> order_;
  AudioObjectID nextID_ = audio::systemObject + 1;
  std::vector<ListenerRef> listeners_;
  std::vector<AudioFault> faults_;
  std::optional<std::pair<std::byte, std::string>> outputOfFailedReads_;
  TimeInterval announcementDelay_{};
  bool deliversAfterRemoval_ = true;
  std::optional<TimeInterval> putsBackAfter_;
};

}  // namespace hushbox
