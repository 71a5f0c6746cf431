#pragma once

#include "platform/Canvas.h"

struct CGContext;

namespace hushbox {

/// The current graphics context as a canvas: its Core Graphics context takes scale, opacity and
/// blend mode, and Bézier paths draw on it. The context's own coordinates are the canvas's, so that
/// y runs downward only in a context that is flipped.
///
/// Nothing is saved or restored: each rendering of an image has a context of its own.
class CGCanvas final : public Canvas {
 public:
  /// `context` is that of the current NSGraphicsContext, and has to stay so.
  explicit CGCanvas(CGContext* context) : context_(context) {}

  void scale(double x, double y) override;
  void setAlpha(double alpha) override;
  void setBlendMode(BlendMode mode) override;
  void setFillColor(Color color) override;
  void setStrokeColor(Color color) override;
  void fill(const Path& path) override;
  void stroke(const Path& path) override;

 private:
  CGContext* context_;
};

}  // namespace hushbox
