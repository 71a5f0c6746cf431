#pragma once

#include "platform/AudioHardware.h"

namespace hushbox {

/// The audio devices of Core Audio's hardware abstraction layer. Main thread only.
///
/// Listeners are called on the main queue. Core Audio keeps them, so that they go on after this
/// object's end; a registration is good for removal on any object of this class.
class CoreAudioHardware final : public AudioHardware {
 public:
  bool hasProperty(AudioObjectID object, const AudioPropertyAddress& address) override;
  AudioStatus getPropertyDataSize(AudioObjectID object, const AudioPropertyAddress& address,
                                  std::uint32_t& size) override;
  AudioStatus getPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t& size, void* data) override;

  /// `audio::unknownProperty` where the value is absent or no text.
  AudioStatus getPropertyText(AudioObjectID object, const AudioPropertyAddress& address,
                              std::string& text) override;

  AudioStatus setPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t size, const void* data) override;
  RegistrationToken addPropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                        std::function<void()> listener) override;

  /// `audio::unsupportedOperation` for an empty registration.
  AudioStatus removePropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                     RegistrationToken listener) override;
};

}  // namespace hushbox
