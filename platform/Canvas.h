#pragma once

#include "platform/Path.h"

namespace hushbox {

/// The colours that the program draws in, by their role; the platform knows what they look like.
enum class Color { black, systemRed, systemGreen };

enum class BlendMode { normal, clear };

/// A 2-D vector context: what an image's drawing handler draws on. Main thread only; the handler
/// must not keep it.
///
/// Coordinates are in points, x to the right and y downward from the top-left corner, until scaled.
/// What is set stays in force for everything that follows.
class Canvas {
 public:
  virtual ~Canvas() = default;

  virtual void scale(double x, double y) = 0;

  /// Opacity from 0 to 1 of all that is drawn from now on.
  virtual void setAlpha(double alpha) = 0;

  virtual void setBlendMode(BlendMode mode) = 0;

  virtual void setFillColor(Color color) = 0;
  virtual void setStrokeColor(Color color) = 0;

  /// Fills the path by its own winding rule.
  virtual void fill(const Path& path) = 0;

  /// Strokes the path with its own line width and cap.
  virtual void stroke(const Path& path) = 0;
};

}  // namespace hushbox
