#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace hushbox::doubles {

/// The audio devices of Core Audio. Main thread only. Listeners are called on their queues, so run
/// the loop after a change.
struct AudioDevice {
  /// `half` returns half the size of a reference, and no reference.
  enum class Name { text, number, absent, half };

  std::string name;
  /// The value of the name property.
  Name kind = Name::text;
  /// 0 to 1; nullopt for a device without input volume.
  std::optional<float> inputVolume = 1.0F;
  /// Non-zero while a program records from the device or plays on it.
  std::uint32_t running = 0;
};

/// Plugs in a device; returns its object identifier.
std::uint32_t plug(AudioDevice device);
/// Removes the device and its listeners.
void unplug(std::uint32_t id);
AudioDevice& device(std::uint32_t id);

/// The device or another program changes the value; listeners are called if it differs.
void setInputVolume(std::uint32_t id, float volume);
void setRunning(std::uint32_t id, bool running);

std::size_t audioListeners();

/// The next call does nothing and returns this status.
void failNextAudioCall(std::int32_t status);

/// From now on a removed listener is called once more, as if the call had been queued before the
/// removal. Its block stays alive until then.
void deliverOneCallAfterRemoval();

void resetAudio();

}  // namespace hushbox::doubles
