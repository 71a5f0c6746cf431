#include "packaging/FlattenedPath.h"

namespace hushbox {
namespace {

Point onCurve(Point a, Point b, Point c, Point d, double t) {
  const double u = 1 - t;
  const double wa = u * u * u, wb = 3 * u * u * t, wc = 3 * u * t * t, wd = t * t * t;
  return {wa * a.x + wb * b.x + wc * c.x + wd * d.x, wa * a.y + wb * b.y + wc * c.y + wd * d.y};
}

}  // namespace

Point mapped(Point p, const AffineTransform& t) {
  return {t.m11 * p.x + t.m21 * p.y + t.tX, t.m12 * p.x + t.m22 * p.y + t.tY};
}

std::vector<Polygon> flattenedPath(const Path& path, const AffineTransform& transform,
                                   int linesPerCurve) {
  using Kind = Path::Element::Kind;
  std::vector<Polygon> polygons;
  for (const Path::Element& element : path.elements()) {
    if (element.kind == Kind::move) polygons.emplace_back();
    if (element.kind == Kind::close || polygons.empty()) continue;
    Polygon& polygon = polygons.back();
    const Point end = mapped(element.end, transform);
    if (element.kind == Kind::curve && !polygon.empty()) {
      const Point start = polygon.back();
      const Point control1 = mapped(element.control1, transform);
      const Point control2 = mapped(element.control2, transform);
      for (int i = 1; i < linesPerCurve; ++i) {
        polygon.push_back(onCurve(start, control1, control2, end, double{1} * i / linesPerCurve));
      }
    }
    polygon.push_back(end);
  }
  return polygons;
}

}  // namespace hushbox
