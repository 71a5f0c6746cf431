#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/RegistrationToken.h"

namespace hushbox {

/// Identifies an audio object; 0 is not an object. A device that is unplugged and plugged in again
/// is a new object.
using AudioObjectID = std::uint32_t;

/// The status of a call. Only 0 means success.
using AudioStatus = std::int32_t;

/// The value of a four-character code, the form in which Core Audio writes selectors and errors.
consteval std::uint32_t fourCharacterCode(const char (&code)[5]) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(code[i]);
  return value;
}

/// Names one property of an audio object, in the terms of macOS's AudioHardware.h, where the values
/// below come from.
struct AudioPropertyAddress {
  std::uint32_t selector;
  std::uint32_t scope;
  std::uint32_t element;

  friend bool operator==(const AudioPropertyAddress&, const AudioPropertyAddress&) = default;
};

namespace audio {

/// The object that stands for the audio system as a whole.
inline constexpr AudioObjectID systemObject = 1;

inline constexpr std::uint32_t scopeGlobal = fourCharacterCode("glob");
inline constexpr std::uint32_t scopeInput = fourCharacterCode("inpt");
inline constexpr std::uint32_t elementMain = 0;

/// On the system object: the devices, an array of AudioObjectID.
inline constexpr AudioPropertyAddress deviceList{fourCharacterCode("dev#"), scopeGlobal,
                                                 elementMain};
/// On a device: its name, read with `getPropertyText`.
inline constexpr AudioPropertyAddress deviceName{fourCharacterCode("lnam"), scopeGlobal,
                                                 elementMain};
/// On a device: its input volume, a 32-bit float from 0 to 1.
inline constexpr AudioPropertyAddress inputVolume{fourCharacterCode("volm"), scopeInput,
                                                  elementMain};
/// On a device: whether any process is using it, a 32-bit unsigned integer, non-zero if so.
inline constexpr AudioPropertyAddress runningSomewhere{fourCharacterCode("gone"), scopeGlobal,
                                                       elementMain};

inline constexpr AudioStatus noError = 0;
inline constexpr AudioStatus unknownProperty = static_cast<AudioStatus>(fourCharacterCode("who?"));
inline constexpr AudioStatus badObject = static_cast<AudioStatus>(fourCharacterCode("!obj"));
inline constexpr AudioStatus badPropertySize = static_cast<AudioStatus>(fourCharacterCode("!siz"));
inline constexpr AudioStatus unsupportedOperation =
    static_cast<AudioStatus>(fourCharacterCode("unop"));
/// The audio server is absent or does not reply.
inline constexpr AudioStatus hardwareNotRunning =
    static_cast<AudioStatus>(fourCharacterCode("stop"));

}  // namespace audio

/// The audio devices as objects with properties. Main thread only.
///
/// Sizes are in bytes. The output is valid only if the call returns 0.
class AudioHardware {
 public:
  virtual ~AudioHardware() = default;

  /// Whether the object exists and has the property.
  virtual bool hasProperty(AudioObjectID object, const AudioPropertyAddress& address) = 0;

  /// Sets `size` to the size of the property's current value.
  virtual AudioStatus getPropertyDataSize(AudioObjectID object, const AudioPropertyAddress& address,
                                          std::uint32_t& size) = 0;

  /// Reads the property into `data`. `size` is the capacity on entry and the number of bytes
  /// written on return. A list is cut to the capacity; a scalar that does not fit is an error.
  virtual AudioStatus getPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                                      std::uint32_t& size, void* data) = 0;

  /// Reads a property whose value is text, as UTF-8. Fails if the value is absent or not text.
  virtual AudioStatus getPropertyText(AudioObjectID object, const AudioPropertyAddress& address,
                                      std::string& text) = 0;

  /// Requests a new value. 0 means that the request was made; a read right after it may still
  /// return the old value. A change calls every listener of the property, the writer's included,
  /// later and from the main loop.
  virtual AudioStatus setPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                                      std::uint32_t size, const void* data) = 0;

  /// Calls `listener` from the main loop after each change of the property; several changes may be
  /// reported by one call. The listener stays until it is removed or the object disappears,
  /// whatever becomes of the token. A call already queued at its removal may still arrive. Returns
  /// an empty token on failure.
  virtual RegistrationToken addPropertyListener(AudioObjectID object,
                                                const AudioPropertyAddress& address,
                                                std::function<void()> listener) = 0;

  /// Removes the listener that `addPropertyListener` added for the same object and address. Fails
  /// if the object no longer exists.
  virtual AudioStatus removePropertyListener(AudioObjectID object,
                                             const AudioPropertyAddress& address,
                                             RegistrationToken listener) = 0;
};

}  // namespace hushbox
