#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/Canvas.h"

namespace hushbox {

/// Fills paths on a square of pixels without any graphics library, so that every build draws the
/// same icon. Smooths edges by sampling.
class IconCanvas final : public Canvas {
 public:
  using Rgb = std::array<std::uint8_t, 3>;

  explicit IconCanvas(int pixels);

  void scale(double x, double y) override;
  void setAlpha(double alpha) override { alpha_ = alpha; }
  /// Ignored: the icon erases nothing.
  void setBlendMode(BlendMode) override {}
  /// The mask on the icon is light, whatever its colour in the menu bar.
  void setFillColor(Color) override { fill_ = {0xF4, 0xF4, 0xF6}; }
  void setStrokeColor(Color) override {}
  void fill(const Path& path) override { fill(path, fill_); }
  /// Ignored: the icon has no lines.
  void stroke(const Path&) override {}

  void fill(const Path& path, Rgb color);
  /// Moves the origin, in the current units.
  void translate(double x, double y);

  int pixels() const { return pixels_; }
  /// Rows from the top, four bytes per pixel: red, green, blue, opacity; not premultiplied.
  const std::vector<std::uint8_t>& rgba() const { return rgba_; }

 private:
  void blend(int x, int y, Rgb color, double coverage);

  int pixels_;
  std::vector<std::uint8_t> rgba_;
  AffineTransform transform_;
  double alpha_ = 1;
  Rgb fill_{};
};

}  // namespace hushbox
