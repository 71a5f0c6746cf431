#pragma once

#include <cairo.h>

#include "platform/Canvas.h"

namespace hushbox {

/// Draws on a cairo context, in the context's own coordinates, with y downward.
///
/// - Cairo has no global alpha, so alpha is part of each colour. It does not affect the stroke that
///   clears: cairo's clear operator erases everything under the shape, whatever the source.
/// - A line that is closed onto itself is drawn with the path's caps; cairo's join would be a blunt
///   end whatever the cap.
/// - Red and green are those of the GNOME palette (Red 2 #ed333b, Green 5 #26a269): of each hue,
/// the
///   one with a contrast of 3:1 to both a white and a black panel.
class CairoCanvas final : public Canvas {
 public:
  /// Holds a reference to `context`. A context in an error state draws nothing.
  explicit CairoCanvas(cairo_t* context);
  ~CairoCanvas() override;
  CairoCanvas(const CairoCanvas&) = delete;
  CairoCanvas& operator=(const CairoCanvas&) = delete;

  void scale(double x, double y) override;
  void setAlpha(double alpha) override { alpha_ = alpha; }
  void setBlendMode(BlendMode mode) override;
  void setFillColor(Color color) override { fillColor_ = color; }
  void setStrokeColor(Color color) override { strokeColor_ = color; }
  void fill(const Path& path) override;
  void stroke(const Path& path) override;

 private:
  void setSource(Color color);

  cairo_t* context_;
  double alpha_ = 1;
  Color fillColor_ = Color::black;
  Color strokeColor_ = Color::black;
};

}  // namespace hushbox
