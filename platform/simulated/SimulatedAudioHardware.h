#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/AudioHardware.h"
#include "platform/simulated/AudioFault.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedDevice.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// Audio devices in memory, behaving as real servers do: every change of a value is announced to
/// all listeners, later and on the loop; a write of the value that is there already is none.
///
/// Lines of the journal name the object, the property, what was given and what came back:
///   "size 1 device list: 8 bytes -> 0"         "get 1 device list (8 bytes): 2 3 -> 0"
///   "text 2 name: \"Jabra Speak2 75\" -> 0"    "has 2 input volume: true"
///   "get 2 input volume (4 bytes): 0.8 -> 0"   "set 2 input volume (4 bytes): 0.8 -> 0"
///   "add listener 2 input volume -> added"     "remove listener 2 input volume -> 0"
/// A status prints as its four-character code where it is one ("-> !obj").
class SimulatedAudioHardware final : public AudioHardware {
 public:
  SimulatedAudioHardware(Journal& journal, SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  // What happens on the desk.

  /// Plugs a device in, at that place in the list of devices (at its end when absent), under an
  /// identifier that was never used before.
  AudioObjectID plug(SimulatedDevice device, std::optional<std::size_t> place = std::nullopt);
  /// The same under an identifier of the caller's choice, even a used one.
  void plugAs(AudioObjectID id, SimulatedDevice device,
              std::optional<std::size_t> place = std::nullopt);
  /// Takes a device away; its listeners go with it.
  void unplug(AudioObjectID id);
  /// Brings the list of devices into this order.
  void reorder(std::vector<AudioObjectID> order);

  /// Another program, or the device itself, sets the input volume.
  void setInputVolume(AudioObjectID id, float volume);
  /// The device's own mute button: drives the input volume to zero, and the next time back to what
  /// it was (to full volume if it was never above zero).
  void pressMuteButton(AudioObjectID id);
  /// Some process starts or stops using the device.
  void setRunning(AudioObjectID id, bool running);
  /// Calls the listeners of a property although nothing has changed.
  void announce(AudioObjectID object, const AudioPropertyAddress& address);

  float inputVolume(AudioObjectID id) const;
  std::vector<AudioObjectID> deviceList() const { return order_; }
  std::size_t listenerCount() const { return listeners_.size(); }

  // How the server behaves.

  /// How long after a change the listeners hear of it; at first in the next turn.
  void setAnnouncementDelay(TimeInterval delay) { announcementDelay_ = delay; }
  /// Whether a call that was under way when its listener was removed still arrives; at first so.
  void setDeliversAfterRemoval(bool delivers) { deliversAfterRemoval_ = delivers; }
  /// A program that puts the input volume back so long after it sees it go to zero; none at first.
  void setPutsVolumeBackAfter(std::optional<TimeInterval> delay) { putsBackAfter_ = delay; }
  void addFault(AudioFault fault) { faults_.push_back(fault); }
  void clearFaults() { faults_.clear(); }

  /// Calls every listener in place once, now.
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
  TimeInterval announcementDelay_{};
  bool deliversAfterRemoval_ = true;
  std::optional<TimeInterval> putsBackAfter_;
};

}  // namespace hushbox
