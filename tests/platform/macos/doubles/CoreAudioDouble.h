#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace hushbox::doubles {

/// The audio devices of Core Audio. Main thread only. Changes are announced by the listeners'
/// queues; run the loop to see it.
struct AudioDevice {
  enum class Name { text, number, absent };

  std::string name;
  /// What the name property gives.
  Name kind = Name::text;
  /// 0 to 1; nothing for a device without an input that has one.
  std::optional<float> inputVolume = 1.0F;
  /// Whether somebody records from it or plays on it.
  std::uint32_t running = 0;
};

/// Plugs a device in; returns its object's number.
std::uint32_t plug(AudioDevice device);
/// Takes the device away, and its listeners with it.
void unplug(std::uint32_t id);
AudioDevice& device(std::uint32_t id);

/// The device itself, or another program, changes it: announced when it differs.
void setInputVolume(std::uint32_t id, float volume);
void setRunning(std::uint32_t id, bool running);

std::size_t audioListeners();

/// What the next call returns instead of doing anything.
void failNextAudioCall(std::int32_t status);

/// From now on a listener that is removed is called once more afterwards, as by a call that was
/// queued before. Its block is kept alive for that long.
void deliverOneCallAfterRemoval();

void resetAudio();

}  // namespace hushbox::doubles
