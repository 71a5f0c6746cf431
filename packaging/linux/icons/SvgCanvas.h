#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Canvas.h"

namespace hushbox {

/// Collects what is drawn as the outlines of filled shapes, and writes them as an SVG picture.
///
/// Symbolic icons consist of filled paths only: toolkits recolour every fill and know neither
/// strokes nor masks there, and the SVG reader of Qt 5 has no clip paths. So a stroke becomes the
/// outline of its line, and erasing cuts the outlines that are there.
class SvgCanvas final : public Canvas {
 public:
  void scale(double x, double y) override;
  void setAlpha(double alpha) override { alpha_ = alpha; }
  void setBlendMode(BlendMode mode) override { mode_ = mode; }
  /// Ignored: the writer of the picture chooses the colour.
  void setFillColor(Color) override {}
  void setStrokeColor(Color) override {}
  void fill(const Path& path) override;
  /// Strokes a straight line with round ends. One that erases must cross everything that it
  /// touches. Aborts for any other stroke.
  void stroke(const Path& path) override;

  /// What was drawn so far, as path elements that all have these attributes.
  std::string paths(std::string_view attributes) const;

 private:
  struct Shape {
    /// Path data in the notation of SVG.
    std::string data;
    /// The same outlines as polygons; curves are divided into short lines.
    std::vector<std::vector<Point>> polygons;
    double alpha = 1;
  };

  /// Cuts the band between two parallel lines out of every shape.
  void erase(Point from, Point to, double width);

  AffineTransform transform_;
  double alpha_ = 1;
  BlendMode mode_ = BlendMode::normal;
  std::vector<Shape> shapes_;
};

}  // namespace hushbox
