#pragma once

namespace hushbox {

/// What a press of the speakerphone's mute button meant.
enum class ButtonEvent {
  /// The device muted itself and stayed muted for the whole bounce window.
  muted,
  /// The input volume came back from zero, or was first seen above it.
  unmuted,
  /// The volume went to zero and came back within the bounce window: the calling host put it back,
  /// so only that there was a press is known.
  toggled
};

}  // namespace hushbox
