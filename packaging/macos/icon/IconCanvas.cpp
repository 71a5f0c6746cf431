#include "packaging/macos/icon/IconCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace hushbox {
namespace {

constexpr int samples = 4;
constexpr int curveSteps = 64;

Point mapped(Point p, const AffineTransform& t) {
  return {t.m11 * p.x + t.m21 * p.y + t.tX, t.m12 * p.x + t.m22 * p.y + t.tY};
}

Point onCurve(Point a, Point b, Point c, Point d, double t) {
  const double u = 1 - t;
  const double wa = u * u * u, wb = 3 * u * u * t, wc = 3 * u * t * t, wd = t * t * t;
  return {wa * a.x + wb * b.x + wc * c.x + wd * d.x, wa * a.y + wb * b.y + wc * c.y + wd * d.y};
}

/// A point where the outline crosses a line of samples, and the direction of the crossing.
struct Crossing {
  double x;
  int direction;
};

std::vector<Crossing> crossings(const std::vector<std::vector<Point>>& outlines, double y) {
  std::vector<Crossing> found;
  for (const std::vector<Point>& outline : outlines) {
    for (std::size_t i = 0; i < outline.size(); ++i) {
      const Point a = outline[i], b = outline[(i + 1) % outline.size()];
      if ((a.y <= y) == (b.y <= y)) continue;
      found.push_back({a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x), a.y < b.y ? 1 : -1});
    }
  }
  std::sort(found.begin(), found.end(), [](Crossing a, Crossing b) { return a.x < b.x; });
  return found;
}

/// Adds to each pixel's count the samples of one line between the two positions.
void count(std::vector<int>& hits, double from, double to) {
  const auto end = static_cast<double>(hits.size() * samples);
  const auto first = static_cast<int>(std::clamp(std::ceil(from * samples - 0.5), 0.0, end));
  const auto last = static_cast<int>(std::clamp(std::ceil(to * samples - 0.5), 0.0, end));
  for (int i = first; i < last; ++i) ++hits[static_cast<std::size_t>(i / samples)];
}

}  // namespace

IconCanvas::IconCanvas(int pixels)
    : pixels_(pixels),
      rgba_(static_cast<std::size_t>(pixels) * static_cast<std::size_t>(pixels) * 4) {}

void IconCanvas::scale(double x, double y) {
  transform_.m11 *= x;
  transform_.m22 *= y;
}

void IconCanvas::translate(double x, double y) {
  transform_.tX += transform_.m11 * x;
  transform_.tY += transform_.m22 * y;
}

std::vector<std::vector<Point>> IconCanvas::flatten(const Path& path) const {
  std::vector<std::vector<Point>> outlines;
  for (const Path::Element& element : path.elements()) {
    if (element.kind == Path::Element::Kind::move) outlines.emplace_back();
    if (element.kind == Path::Element::Kind::close || outlines.empty()) continue;
    std::vector<Point>& outline = outlines.back();
    const Point end = mapped(element.end, transform_);
    if (element.kind == Path::Element::Kind::curve && !outline.empty()) {
      const Point start = outline.back();
      const Point control1 = mapped(element.control1, transform_);
      const Point control2 = mapped(element.control2, transform_);
      for (int i = 1; i < curveSteps; ++i) {
        outline.push_back(onCurve(start, control1, control2, end, double{1} * i / curveSteps));
      }
    }
    outline.push_back(end);
  }
  return outlines;
}

void IconCanvas::fill(const Path& path, Rgb color) {
  const std::vector<std::vector<Point>> outlines = flatten(path);
  const bool evenOdd = path.windingRule() == Path::WindingRule::evenOdd;
  for (int y = 0; y < pixels_; ++y) {
    std::vector<int> hits(static_cast<std::size_t>(pixels_));
    for (int line = 0; line < samples; ++line) {
      int winding = 0;
      double from = 0;
      for (const Crossing& crossing : crossings(outlines, y + (line + 0.5) / samples)) {
        if (evenOdd ? winding % 2 != 0 : winding != 0) count(hits, from, crossing.x);
        winding += crossing.direction;
        from = crossing.x;
      }
    }
    for (int x = 0; x < pixels_; ++x) {
      blend(x, y, color, alpha_ * hits[static_cast<std::size_t>(x)] / (samples * samples));
    }
  }
}

void IconCanvas::blend(int x, int y, Rgb color, double coverage) {
  if (coverage <= 0) return;
  const auto row = static_cast<std::size_t>(y) * static_cast<std::size_t>(pixels_);
  std::uint8_t* pixel = &rgba_[(row + static_cast<std::size_t>(x)) * 4];
  const double below = pixel[3] / 255.0 * (1 - coverage);
  const double opacity = coverage + below;
  for (std::size_t i = 0; i < 3; ++i) {
    pixel[i] =
        static_cast<std::uint8_t>(std::lround((color[i] * coverage + pixel[i] * below) / opacity));
  }
  pixel[3] = static_cast<std::uint8_t>(std::lround(opacity * 255));
}

}  // namespace hushbox
