#include "platform/Path.h"

namespace hushbox {

void Path::moveTo(Point end) {
  elements_.push_back({Element::Kind::move, end, {}, {}});
}

void Path::lineTo(Point end) {
  elements_.push_back({Element::Kind::line, end, {}, {}});
}

void Path::curveTo(Point end, Point control1, Point control2) {
  elements_.push_back({Element::Kind::curve, end, control1, control2});
}

void Path::close() {
  elements_.push_back({Element::Kind::close, {}, {}, {}});
}

void Path::append(const Path& other) {
  const auto added = other.elements_;
  elements_.insert(elements_.end(), added.begin(), added.end());
}

void Path::transform(const AffineTransform& by) {
  const auto map = [&by](Point p) {
    return Point{by.m11 * p.x + by.m21 * p.y + by.tX, by.m12 * p.x + by.m22 * p.y + by.tY};
  };
  for (Element& element : elements_) {
    if (element.kind == Element::Kind::close) continue;
    element.end = map(element.end);
    if (element.kind != Element::Kind::curve) continue;
    element.control1 = map(element.control1);
    element.control2 = map(element.control2);
  }
}

}  // namespace hushbox
