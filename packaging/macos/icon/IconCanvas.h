#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/Canvas.h"

namespace hushbox {

/// A square of pixels that paths are filled on, without any help of the system: the icon is drawn
/// while building, and the same everywhere. Edges are smoothed by sampling.
class IconCanvas final : public Canvas {
 public:
  using Rgb = std::array<std::uint8_t, 3>;

  explicit IconCanvas(int pixels);

  void scale(double x, double y) override;
  void setAlpha(double alpha) override { alpha_ = alpha; }
  /// The icon needs no erasing.
  void setBlendMode(BlendMode) override {}
  /// A mask on an icon is light, whatever colour the menu bar would give it.
  void setFillColor(Color) override { fill_ = {0xF4, 0xF4, 0xF6}; }
  void setStrokeColor(Color) override {}
  void fill(const Path& path) override { fill(path, fill_); }
  /// The icon has no line.
  void stroke(const Path&) override {}

  void fill(const Path& path, Rgb color);
  /// Moves the origin, in the units in force.
  void translate(double x, double y);

  int pixels() const { return pixels_; }
  /// Rows from the top, four bytes a pixel: red, green, blue, opacity; not premultiplied.
  const std::vector<std::uint8_t>& rgba() const { return rgba_; }

 private:
  std::vector<std::vector<Point>> flatten(const Path& path) const;
  void blend(int x, int y, Rgb color, double coverage);

  int pixels_;
  std::vector<std::uint8_t> rgba_;
  AffineTransform transform_;
  double alpha_ = 1;
  Rgb fill_{};
};

}  // namespace hushbox
