#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/RegistrationToken.h"

namespace hushbox {

/// Identifies an audio object; never handed out twice in the life of the process, 0 is no object.
using AudioObjectID = std::uint32_t;

/// The status of a call: 0 is the only success.
using AudioStatus = std::int32_t;

/// A four-character code as the audio hardware interface writes its selectors and errors.
consteval std::uint32_t fourCharacterCode(const char (&code)[5]) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(code[i]);
  return value;
}

/// Names one property of an audio object. Figures from the audio hardware interface's
/// documentation.
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

/// On the system object: the devices, an array of 32-bit identifiers.
inline constexpr AudioPropertyAddress deviceList{fourCharacterCode("dev#"), scopeGlobal,
                                                 elementMain};
/// On a device: its name, a text (read it with `getPropertyText`).
inline constexpr AudioPropertyAddress deviceName{fourCharacterCode("lnam"), scopeGlobal,
                                                 elementMain};
/// On a device: its input volume, a 32-bit float from 0 to 1.
inline constexpr AudioPropertyAddress inputVolume{fourCharacterCode("volm"), scopeInput,
                                                  elementMain};
/// On a device: whether any process is using it, 32-bit unsigned, non-zero when running.
inline constexpr AudioPropertyAddress runningSomewhere{fourCharacterCode("gone"), scopeGlobal,
                                                       elementMain};

inline constexpr AudioStatus noError = 0;
inline constexpr AudioStatus unknownProperty = static_cast<AudioStatus>(fourCharacterCode("who?"));
inline constexpr AudioStatus badObject = static_cast<AudioStatus>(fourCharacterCode("!obj"));
inline constexpr AudioStatus badPropertySize = static_cast<AudioStatus>(fourCharacterCode("!siz"));
inline constexpr AudioStatus unsupportedOperation =
    static_cast<AudioStatus>(fourCharacterCode("unop"));
/// The audio server does not answer, or there is none.
inline constexpr AudioStatus hardwareNotRunning =
    static_cast<AudioStatus>(fourCharacterCode("stop"));

}  // namespace audio

/// The audio devices, seen as objects with properties. Main thread only.
///
/// Sizes are in bytes. Where a status other than 0 comes back, the output must not be used.
class AudioHardware {
 public:
  virtual ~AudioHardware() = default;

  virtual bool hasProperty(AudioObjectID object, const AudioPropertyAddress& address) = 0;

  /// Puts the size of the property's present value into `size`.
  virtual AudioStatus getPropertyDataSize(AudioObjectID object, const AudioPropertyAddress& address,
                                          std::uint32_t& size) = 0;

  /// Reads the property into `data`. `size` is the room on entry and what was written on return.
  virtual AudioStatus getPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                                      std::uint32_t& size, void* data) = 0;

  /// Reads a property whose value is a text object, as UTF-8. A value that is absent or no text is
  /// a failure too.
  virtual AudioStatus getPropertyText(AudioObjectID object, const AudioPropertyAddress& address,
                                      std::string& text) = 0;

  /// Asks for a new value. The change is made known through the listeners, later and on the loop,
  /// to the one who wrote as to everybody else.
  virtual AudioStatus setPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                                      std::uint32_t size, const void* data) = 0;

  /// Calls `listener` on the main loop after each change of the property; one call may stand for
  /// several changes. The listener stays in place until it is removed or the object is gone; a call
  /// that was under way at the removal may still arrive once. Empty when it could not be added.
  virtual RegistrationToken addPropertyListener(AudioObjectID object,
                                                const AudioPropertyAddress& address,
                                                std::function<void()> listener) = 0;

  /// Takes away what `addPropertyListener` gave for the same object and address.
  virtual AudioStatus removePropertyListener(AudioObjectID object,
                                             const AudioPropertyAddress& address,
                                             RegistrationToken listener) = 0;
};

}  // namespace hushbox
