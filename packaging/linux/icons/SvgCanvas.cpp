#include "packaging/linux/icons/SvgCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "packaging/FlattenedPath.h"

namespace hushbox {
namespace {

using Kind = Path::Element::Kind;

constexpr int linesPerCurve = 32;

/// With up to three decimals, and none where there are only zeros.
std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", value);
  std::string result = text;
  result.erase(result.find_last_not_of('0') + 1);
  if (result.back() == '.') result.pop_back();
  return result == "-0" ? "0" : result;
}

std::string text(Point p) {
  return number(p.x) + ' ' + number(p.y);
}

std::string dataOf(const std::vector<Polygon>& polygons) {
  std::string data;
  for (const Polygon& polygon : polygons) {
    for (std::size_t i = 0; i < polygon.size(); ++i) data += (i ? 'L' : 'M') + text(polygon[i]);
    data += 'Z';
  }
  return data;
}

/// The part of a polygon on the side of a line where `side` is not negative: a x + b y + c.
Polygon clipped(const Polygon& polygon, double a, double b, double c) {
  const auto side = [&](Point p) { return a * p.x + b * p.y + c; };
  Polygon kept;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const Point p = polygon[i], q = polygon[(i + 1) % polygon.size()];
    const double sideP = side(p), sideQ = side(q);
    if (sideP >= 0) kept.push_back(p);
    if ((sideP >= 0) == (sideQ >= 0)) continue;
    const double t = sideP / (sideP - sideQ);
    kept.push_back({p.x + t * (q.x - p.x), p.y + t * (q.y - p.y)});
  }
  return kept;
}

}  // namespace

void SvgCanvas::scale(double x, double y) {
  transform_.m11 *= x;
  transform_.m22 *= y;
}

void SvgCanvas::fill(const Path& path) {
  Shape shape{
      .data = {}, .polygons = flattenedPath(path, transform_, linesPerCurve), .alpha = alpha_};
  for (const Path::Element& element : path.elements()) {
    const std::string end = text(mapped(element.end, transform_));
    switch (element.kind) {
      case Kind::move:
        shape.data += 'M' + end;
        break;
      case Kind::line:
        shape.data += 'L' + end;
        break;
      case Kind::curve:
        shape.data += 'C' + text(mapped(element.control1, transform_)) + ' ' +
                      text(mapped(element.control2, transform_)) + ' ' + end;
        break;
      case Kind::close:
        shape.data += 'Z';
        break;
    }
  }
  shapes_.push_back(std::move(shape));
}

void SvgCanvas::stroke(const Path& path) {
  const auto& elements = path.elements();
  const bool isLine = elements.size() == 3 && elements[0].kind == Kind::move &&
                      elements[1].kind == Kind::line && elements[2].kind == Kind::close;
  if (!isLine || path.lineCap() != Path::LineCap::round || transform_.m11 != transform_.m22)
    std::abort();
  const Point from = mapped(elements[0].end, transform_), to = mapped(elements[1].end, transform_);
  const double width = path.lineWidth() * transform_.m11;
  if (mode_ == BlendMode::clear) return erase(from, to, width);

  const double length = std::hypot(to.x - from.x, to.y - from.y);
  const double r = width / 2, dx = (to.x - from.x) / length * r, dy = (to.y - from.y) / length * r;
  const std::string arc = 'A' + number(r) + ' ' + number(r) + " 0 0 0 ";
  shapes_.push_back({.data = 'M' + text({from.x - dy, from.y + dx}) + 'L' +
                             text({to.x - dy, to.y + dx}) + arc + text({to.x + dy, to.y - dx}) +
                             'L' + text({from.x + dy, from.y - dx}) + arc +
                             text({from.x - dy, from.y + dx}) + 'Z',
                     .polygons = {},
                     .alpha = alpha_});
}

void SvgCanvas::erase(Point from, Point to, double width) {
  const double length = std::hypot(to.x - from.x, to.y - from.y);
  const double dx = (to.x - from.x) / length, dy = (to.y - from.y) / length;
  // Positive to the left of the line, by the distance from it.
  const double a = dy, b = -dx, c = -(a * from.x + b * from.y);
  for (Shape& shape : shapes_) {
    std::vector<Polygon> kept;
    for (const Polygon& polygon : shape.polygons) {
      for (const Point p : polygon) {
        const double along = (p.x - from.x) * dx + (p.y - from.y) * dy;
        if (along < 0 || along > length) std::abort();
      }
      for (const double side : {1.0, -1.0}) {
        Polygon part = clipped(polygon, side * a, side * b, side * c - width / 2);
        if (!part.empty()) kept.push_back(std::move(part));
      }
    }
    shape.polygons = std::move(kept);
    shape.data = dataOf(shape.polygons);
  }
}

std::string SvgCanvas::paths(std::string_view attributes) const {
  std::string result;
  for (const Shape& shape : shapes_) {
    result += "  <path " + std::string(attributes) + " fill-rule=\"evenodd\"";
    if (shape.alpha != 1) result += " opacity=\"" + number(shape.alpha) + '"';
    result += " d=\"" + shape.data + "\"/>\n";
  }
  return result;
}

}  // namespace hushbox
