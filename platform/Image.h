#pragma once

#include <functional>
#include <string>

#include "platform/Canvas.h"

namespace hushbox {

/// A vector picture: its size and a handler that draws it, called for each rendering at whatever
/// pixel density the display needs.
struct Image {
  /// In points.
  double width = 0;
  double height = 0;
  /// Whether y runs downward, with the canvas's origin in the top-left corner.
  bool flipped = false;
  /// Whether only the opacity counts, and the menu bar chooses the colour to suit its background.
  bool isTemplate = false;
  /// The name of the same picture among installed icons, for a menu bar that shows icons by name.
  /// Not every picture with a name is installed. Empty for a picture that has none.
  std::string name = {};
  /// Draws on the canvas. Returns false, without drawing, if `canvas` is null. Captures values
  /// only, so it may be called at any later time.
  std::function<bool(Canvas* canvas)> draw = nullptr;
};

}  // namespace hushbox
