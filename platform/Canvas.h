#pragma once

#include "platform/Path.h"

namespace hushbox {

/// The colours that the program draws in, by role; the platform chooses the shades.
enum class Color { black, systemRed, systemGreen };

enum class BlendMode { normal, clear };

/// A 2-D vector context that an image's drawing handler draws on. Main thread only; valid during
/// the handler's call.
///
/// Coordinates are in points, x to the right and y downward from the top-left corner, until scaled.
/// Each setting applies to everything drawn after it.
class Canvas {
 public:
  virtual ~Canvas() = default;

  /// Scales the coordinate system by these factors.
  virtual void scale(double x, double y) = 0;

  /// Sets the opacity, from 0 to 1.
  virtual void setAlpha(double alpha) = 0;

  /// `clear` erases what it covers instead of painting it.
  virtual void setBlendMode(BlendMode mode) = 0;

  virtual void setFillColor(Color color) = 0;
  virtual void setStrokeColor(Color color) = 0;

  /// Fills the path by the path's winding rule.
  virtual void fill(const Path& path) = 0;

  /// Strokes the path with the path's line width and cap.
  virtual void stroke(const Path& path) = 0;
};

}  // namespace hushbox
