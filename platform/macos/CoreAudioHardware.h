#pragma once

#include "platform/AudioHardware.h"

namespace hushbox {

/// The audio devices of Core Audio's hardware abstraction layer. Main thread only.
///
/// Listeners are called on the main queue. Core Audio owns them, so they outlive this object, and
/// any object of this class can remove them.
class CoreAudioHardware final : public AudioHardware {
 public:
  bool hasProperty(AudioObjectID object, const AudioPropertyAddress& address) override;
  AudioStatus getPropertyDataSize(AudioObjectID object, const AudioPropertyAddress& address,
                                  std::uint32_t& size) override;
  AudioStatus getPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t& size, void* data) override;

  /// Returns `audio::unknownProperty` if there is no value or it is not a string.
  AudioStatus getPropertyText(AudioObjectID object, const AudioPropertyAddress& address,
                              std::string& text) override;

  AudioStatus setPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t size, const void* data) override;
  RegistrationToken addPropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                        std::function<void()> listener) override;

  /// Returns `audio::unsupportedOperation` for an empty token.
  AudioStatus removePropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                     RegistrationToken listener) override;
};

}  // namespace hushbox
