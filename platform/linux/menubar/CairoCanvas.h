#pragma once

#include <cairo.h>

#include "platform/Canvas.h"

namespace hushbox {

/// A cairo context as a canvas. The context's own coordinates, y downward, are the canvas's.
///
/// - Alpha goes into the colours, since cairo has no global one; the stroke that clears takes no
///   notice of it: cairo's clear operator erases wholly what the shape covers, whatever the source.
/// - A line that is closed onto itself has ends rather than corners, and gets the path's caps
/// there;
///   cairo's join for it would be a blunt end under any cap.
/// - The reds and greens are those of the GNOME palette (Red 2 #ed333b, Green 5 #26a269), of each
///   hue the one that keeps a contrast of 3:1 to a white panel and to a black one alike.
class CairoCanvas final : public Canvas {
 public:
  /// Draws on `context` as it comes, keeping it alive. A context in an error state draws nothing.
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
