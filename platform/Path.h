#pragma once

#include <vector>

namespace hushbox {

/// A point, in points or in the units that the canvas was scaled to.
struct Point {
  double x = 0;
  double y = 0;

  friend bool operator==(const Point&, const Point&) = default;
};

/// Maps (x, y) to (m11 x + m21 y + tX, m12 x + m22 y + tY).
struct AffineTransform {
  double m11 = 1, m12 = 0, m21 = 0, m22 = 1, tX = 0, tY = 0;

  friend bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

/// A vector path with its drawing attributes. A plain value; any thread.
class Path {
 public:
  enum class WindingRule { nonZero, evenOdd };
  enum class LineCap { butt, round };

  /// One step of the path. A curve (a cubic Bézier curve) uses all three points, a move and a line
  /// only `end`, a close none.
  struct Element {
    enum class Kind { move, line, curve, close } kind = Kind::move;
    Point end{};
    Point control1{};
    Point control2{};

    friend bool operator==(const Element&, const Element&) = default;
  };

  void moveTo(Point end);
  void lineTo(Point end);
  void curveTo(Point end, Point control1, Point control2);
  void close();
  /// Appends the steps of `other`, but not its attributes.
  void append(const Path& other);
  /// Maps every point; the line width stays as it is.
  void transform(const AffineTransform& by);

  void setWindingRule(WindingRule rule) { windingRule_ = rule; }
  void setLineWidth(double width) { lineWidth_ = width; }
  void setLineCap(LineCap cap) { lineCap_ = cap; }

  const std::vector<Element>& elements() const { return elements_; }
  WindingRule windingRule() const { return windingRule_; }
  /// In the units of the path's coordinates.
  double lineWidth() const { return lineWidth_; }
  LineCap lineCap() const { return lineCap_; }

 private:
  std::vector<Element> elements_;
  WindingRule windingRule_ = WindingRule::nonZero;
  double lineWidth_ = 1;
  LineCap lineCap_ = LineCap::butt;
};

}  // namespace hushbox
