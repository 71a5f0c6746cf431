#pragma once

#include "platform/Canvas.h"
#include "platform/simulated/Journal.h"

namespace hushbox {

/// A canvas that draws nothing and records its operations, one per line: "scale 18 18",
/// "alpha 0.45", "blend clear", "fill color black", "stroke color systemRed",
/// "fill evenOdd: M 0 0 L 1 0 C 1 1 1 0.5 0.5 1 Z",
/// "stroke width 0.1 cap round: M 0 0 L 1 1". The points of a curve are its first control point,
/// its second and its end.
class RecordingCanvas final : public Canvas {
 public:
  const Lines& lines() const { return lines_; }

  void scale(double x, double y) override;
  void setAlpha(double alpha) override;
  void setBlendMode(BlendMode mode) override;
  void setFillColor(Color color) override;
  void setStrokeColor(Color color) override;
  void fill(const Path& path) override;
  void stroke(const Path& path) override;

 private:
  Lines lines_;
};

}  // namespace hushbox
