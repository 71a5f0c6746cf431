#pragma once

#include "platform/Canvas.h"

struct CGContext;

namespace hushbox {

/// Draws on the current graphics context. Scale, opacity and blend mode are set on its Core
/// Graphics context; NSBezierPath fills and strokes. The canvas uses the context's coordinates, so
/// y runs downward only if the context is flipped.
///
/// Saves and restores no graphics state: each rendering of an image has its own context.
class CGCanvas final : public Canvas {
 public:
  /// `context` must belong to the current NSGraphicsContext for as long as this lives.
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
