#pragma once

namespace hushbox {

/// What a press of the speakerphone's mute button did.
enum class ButtonEvent {
  /// The input volume dropped to zero and stayed there for the whole bounce window.
  muted,
  /// The input volume rose above zero while the device was believed muted or its state was unknown.
  unmuted,
  /// The input volume dropped to zero and rose again within the bounce window, because the calling
  /// program restored it. The button was pressed; which state the user meant is unknown.
  toggled
};

}  // namespace hushbox
