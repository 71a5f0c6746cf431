#pragma once

#include <functional>

#include "platform/Canvas.h"

namespace hushbox {

/// A picture kept as vectors: its size and a handler that draws it afresh at each rendering, at
/// whatever pixel density the display needs.
struct Image {
  /// In points.
  double width = 0;
  double height = 0;
  /// Whether y runs downward; then the canvas's origin is the top-left corner.
  bool flipped = false;
  /// A template is used for its opacity only and recoloured to suit what it lies on.
  bool isTemplate = false;
  /// Draws on the canvas and says whether it drew; false without one. Holds no reference to anyone.
  std::function<bool(Canvas* canvas)> draw;
};

}  // namespace hushbox
