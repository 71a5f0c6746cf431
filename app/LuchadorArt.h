#pragma once

#include <optional>

#include "platform/Image.h"

namespace hushbox {

/// The art of the menu-bar item: a wrestler's mask. Stateless; main thread only.
class LuchadorArt {
 public:
  LuchadorArt() = delete;

  /// The mask, 18 by 18 points: slashed when `muted`, at 40 % opacity when not `connected`, in
  /// `tint`, or without one in black as a template that the menu bar recolours.
  static Image menuBarImage(bool muted, bool connected, std::optional<Color> tint);
};

}  // namespace hushbox
