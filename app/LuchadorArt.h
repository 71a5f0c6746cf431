#pragma once

#include <optional>

#include "platform/Image.h"

namespace hushbox {

/// Draws the menu-bar icon, a wrestler's mask. Stateless; main thread only.
class LuchadorArt {
 public:
  LuchadorArt() = delete;

  /// Returns the mask, 18 by 18 points: slashed if `muted`, at 40 % opacity unless `connected`. It
  /// is drawn in `tint`; without a tint it is a black template that the menu bar recolours. Each
  /// combination has a name of its own.
  static Image menuBarImage(bool muted, bool connected, std::optional<Color> tint);
};

}  // namespace hushbox
