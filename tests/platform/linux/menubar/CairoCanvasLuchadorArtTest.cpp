#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "app/LuchadorArt.h"
#include "platform/linux/menubar/CairoCanvas.h"

namespace hushbox {
namespace {

// An independent reading of the drawing, without the program's paths and without cairo: a closed
// curve is a polygon of many short lines, a point is inside if an odd number of curves surrounds
// it, and a stroke with round caps is every point near enough to its line.

using Polygon = std::vector<Point>;

struct Curve {
  Point end, control1, control2;
};

Polygon flatten(Point start, const std::vector<Curve>& curves) {
  constexpr int steps = 32;
  Polygon polygon{start};
  for (const Curve& curve : curves) {
    const Point from = polygon.back();
    for (int i = 1; i <= steps; ++i) {
      const double t = static_cast<double>(i) / steps, u = 1 - t;
      const double a = u * u * u, b = 3 * u * u * t, c = 3 * u * t * t, d = t * t * t;
      polygon.push_back(
          {a * from.x + b * curve.control1.x + c * curve.control2.x + d * curve.end.x,
           a * from.y + b * curve.control1.y + c * curve.control2.y + d * curve.end.y});
    }
  }
  return polygon;
}

Polygon mirrored(Polygon polygon) {
  for (Point& point : polygon) point.x = 100 - point.x;
  return polygon;
}

const Polygon head = flatten({50, 4}, {{{92, 46}, {76, 4}, {92, 22}},
                                       {{50, 96}, {92, 70}, {76, 92}},
                                       {{8, 46}, {24, 92}, {8, 70}},
                                       {{50, 4}, {8, 22}, {24, 4}}});
const Polygon leftEye =
    flatten({20, 45}, {{{45, 47}, {25, 35}, {39, 35}}, {{20, 45}, {38, 55}, {26, 55}}});
const Polygon mouth =
    flatten({37, 73}, {{{63, 73}, {44, 68}, {56, 68}}, {{37, 73}, {58, 82}, {42, 82}}});
const Polygon diamond{{50, 11}, {58, 22}, {50, 33}, {42, 22}};

/// Where the curves cross the horizontal at `y`, from left to right; a point after an odd number of
/// crossings is inside.
std::vector<double> crossingsOfMask(double y) {
  static const std::vector<Polygon> curves{head, leftEye, mirrored(leftEye), mouth, diamond};
  std::vector<double> crossings;
  for (const Polygon& curve : curves) {
    for (std::size_t i = 0; i < curve.size(); ++i) {
      const Point a = curve[i], b = curve[(i + 1) % curve.size()];
      if ((a.y > y) != (b.y > y)) crossings.push_back(a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x));
    }
  }
  std::ranges::sort(crossings);
  return crossings;
}

double distanceFromSlash(Point p) {
  constexpr Point from{10, 6}, to{94, 94};
  constexpr double dx = to.x - from.x, dy = to.y - from.y;
  const double along =
      std::clamp(((p.x - from.x) * dx + (p.y - from.y) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
  return std::hypot(p.x - from.x - along * dx, p.y - from.y - along * dy);
}

/// The part of each pixel that is in the mask, in the erased band and in the slash, from 0 to 1.
struct Coverage {
  std::vector<double> mask, band, slash;
};

Coverage measure(int size) {
  constexpr int samples = 12;
  const auto pixels = static_cast<std::size_t>(size * size);
  Coverage coverage{std::vector<double>(pixels), std::vector<double>(pixels),
                    std::vector<double>(pixels)};
  constexpr double part = 1.0 / (samples * samples);
  for (int row = 0; row < size * samples; ++row) {
    const double y = (row + 0.5) * 100 / (size * samples);
    const std::vector<double> crossings = crossingsOfMask(y);
    auto crossing = crossings.begin();
    for (int column = 0; column < size * samples; ++column) {
      const double x = (column + 0.5) * 100 / (size * samples);
      while (crossing != crossings.end() && *crossing < x) ++crossing;
      const auto pixel = static_cast<std::size_t>(row / samples * size + column / samples);
      if ((crossing - crossings.begin()) % 2 == 1) coverage.mask[pixel] += part;
      const double distance = distanceFromSlash({x, y});
      if (distance <= 11) coverage.band[pixel] += part;
      if (distance <= 5) coverage.slash[pixel] += part;
    }
  }
  return coverage;
}

const Coverage& coverageAt(int size) {
  static std::map<int, Coverage> measured;
  const auto found = measured.find(size);
  return found != measured.end() ? found->second
                                 : measured.emplace(size, measure(size)).first->second;
}

/// The picture as bytes, premultiplied, after rendering at `size` pixels.
class Picture {
 public:
  Picture(int size, bool muted, bool connected, std::optional<Color> tint)
      : size_(size), surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size, size)) {
    cairo_t* context = cairo_create(surface_);
    CairoCanvas canvas(context);
    canvas.scale(size / 18.0, size / 18.0);
    drew_ = LuchadorArt::menuBarImage(muted, connected, tint).draw(&canvas);
    cairo_destroy(context);
    cairo_surface_flush(surface_);
  }
  ~Picture() { cairo_surface_destroy(surface_); }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  bool drew() const { return drew_; }

  std::uint32_t pixel(int x, int y) const {
    const auto* row = cairo_image_surface_get_data(surface_) +
                      std::ptrdiff_t{y} * cairo_image_surface_get_stride(surface_);
    return reinterpret_cast<const std::uint32_t*>(row)[x];
  }
  double alpha(int x, int y) const { return (pixel(x, y) >> 24) / 255.0; }
  /// At a point of the design's 100 by 100 units.
  double alphaAt(Point p) const {
    return alpha(static_cast<int>(p.x * size_ / 100), static_cast<int>(p.y * size_ / 100));
  }

 private:
  int size_;
  cairo_surface_t* surface_;
  bool drew_ = false;
};

struct Glyph {
  int size;
  bool muted, connected;
  std::optional<Color> tint;
};

std::vector<Glyph> allGlyphs() {
  std::vector<Glyph> glyphs;
  for (const int size : {18, 36, 64}) {
    for (const bool muted : {false, true}) {
      for (const bool connected : {false, true}) {
        for (const auto tint : {std::optional<Color>(), std::optional(Color::systemRed),
                                std::optional(Color::systemGreen)})
          glyphs.push_back({size, muted, connected, tint});
      }
    }
  }
  return glyphs;
}

std::string name(const Glyph& glyph) {
  std::string text = std::to_string(glyph.size) + (glyph.muted ? "Muted" : "Live");
  text += glyph.connected ? "Connected" : "Disconnected";
  if (!glyph.tint) return text + "Template";
  return text + (*glyph.tint == Color::systemRed ? "Red" : "Green");
}

class CairoCanvasLuchadorArtTest : public testing::TestWithParam<Glyph> {
 protected:
  const Glyph glyph_ = GetParam();
  const Coverage& geometry_ = coverageAt(glyph_.size);
  const double opacity_ = glyph_.connected ? 1.0 : 0.4;
  const Picture picture_{glyph_.size, glyph_.muted, glyph_.connected, glyph_.tint};
};

TEST_P(CairoCanvasLuchadorArtTest, EveryPixelHasTheOpacityOfTheGeometry) {
  ASSERT_TRUE(picture_.drew());
  double worst = 0;
  for (int y = 0; y < glyph_.size; ++y) {
    for (int x = 0; x < glyph_.size; ++x) {
      const auto pixel = static_cast<std::size_t>(y * glyph_.size + x);
      double expected = opacity_ * geometry_.mask[pixel];
      if (glyph_.muted) {
        // Erased completely at any opacity, and then the slash on top.
        const double slash = opacity_ * geometry_.slash[pixel];
        expected = slash + expected * (1 - geometry_.band[pixel]) * (1 - slash);
      }
      worst = std::max(worst, std::abs(picture_.alpha(x, y) - expected));
    }
  }
  // The two ways to compute how much of a pixel an edge covers differ by this much.
  EXPECT_LT(worst, 0.08);
}

TEST_P(CairoCanvasLuchadorArtTest, EveryPixelHasTheSameColour) {
  const std::array<int, 3> colour = !glyph_.tint ? std::array{0, 0, 0}
                                    : *glyph_.tint == Color::systemRed
                                        ? std::array{0xed, 0x33, 0x3b}
                                        : std::array{0x26, 0xa2, 0x69};
  for (int y = 0; y < glyph_.size; ++y) {
    for (int x = 0; x < glyph_.size; ++x) {
      const std::uint32_t pixel = picture_.pixel(x, y);
      for (std::size_t i = 0; i < 3; ++i) {
        const double channel = pixel >> (16 - 8 * i) & 0xff;
        ASSERT_NEAR(channel, colour[i] * picture_.alpha(x, y), 2) << x << "," << y;
      }
    }
  }
}

TEST_P(CairoCanvasLuchadorArtTest, HolesAreTransparentInEveryState) {
  int empty = 0;
  for (const Point hole : {Point{68, 45}, Point{32, 45}, Point{50, 22}, Point{50, 74.5}}) {
    const auto pixel =
        static_cast<std::size_t>(static_cast<int>(hole.y * glyph_.size / 100) * glyph_.size +
                                 static_cast<int>(hole.x * glyph_.size / 100));
    // Pixels that are completely inside the hole, unless the slash covers it.
    if (geometry_.mask[pixel] > 0 || (glyph_.muted && geometry_.slash[pixel] > 0)) continue;
    EXPECT_EQ(picture_.alphaAt(hole), 0) << hole.x << "," << hole.y;
    ++empty;
  }
  EXPECT_GE(empty, glyph_.size == 18 ? 2 : 3);
}

TEST_P(CairoCanvasLuchadorArtTest, FaceIsSolidAndItsSurroundingsAreEmpty) {
  for (const Point skin : {Point{80, 30}, Point{22, 65}, Point{30, 80}})
    EXPECT_NEAR(picture_.alphaAt(skin), opacity_, 0.003) << skin.x << "," << skin.y;
  for (const Point outside : {Point{97, 3}, Point{3, 97}, Point{2, 50}, Point{98, 60}})
    EXPECT_EQ(picture_.alphaAt(outside), 0) << outside.x << "," << outside.y;
}

TEST_P(CairoCanvasLuchadorArtTest, SlashLiesInAnErasedBandOnlyWhenMuted) {
  // At 18 pixels, a pixel is as wide as the gap between slash and face, so that none is erased
  // completely; the test of every pixel above covers that size.
  if (glyph_.size < 36) return;
  // Across the slash, over the cheek.
  const auto offSlash = [](double distance) {
    return Point{70 + distance * 0.7234, 68.86 - distance * 0.6905};
  };
  EXPECT_NEAR(picture_.alphaAt(offSlash(0)), opacity_, 0.003);
  EXPECT_NEAR(picture_.alphaAt(offSlash(8)), glyph_.muted ? 0 : opacity_, 0.003);
  EXPECT_NEAR(picture_.alphaAt(offSlash(15)), opacity_, 0.003);
  // The round caps reach beyond the ends of the line.
  EXPECT_NEAR(picture_.alphaAt({96.5, 96.5}), glyph_.muted ? opacity_ : 0, 0.15);
  EXPECT_LT(picture_.alphaAt({99.5, 99.5}), 0.03);
}

INSTANTIATE_TEST_SUITE_P(AllStates, CairoCanvasLuchadorArtTest, testing::ValuesIn(allGlyphs()),
                         [](const auto& info) { return name(info.param); });

TEST(LuchadorArtWithoutContextTest, DrawsNothingAndReturnsFalse) {
  EXPECT_FALSE(LuchadorArt::menuBarImage(true, true, std::nullopt).draw(nullptr));
}

}  // namespace
}  // namespace hushbox
