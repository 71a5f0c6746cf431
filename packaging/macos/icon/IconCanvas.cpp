#include "packaging/macos/icon/IconCanvas.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "packaging/FlattenedPath.h"

namespace hushbox {
namespace {

constexpr int samples = 4;
constexpr int linesPerCurve = 64;

/// A point where the outline crosses a line of samples, and the direction of the crossing.
struct Crossing {
  double x;
  int direction;
};

std::vector<Crossing> crossings(const std::vector<Polygon>& outlines, double y) {
  std::vector<Crossing> found;
  for (const Polygon& outline : outlines) {
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

void IconCanvas::fill(const Path& path, Rgb color) {
  const std::vector<Polygon> outlines = flattenedPath(path, transform_, linesPerCurve);
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
