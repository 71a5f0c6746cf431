#include "platform/linux/menubar/CairoCanvas.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>

namespace hushbox {
namespace {

constexpr int size = 40;

class CairoCanvasTest : public testing::Test {
 protected:
  CairoCanvasTest() { context_ = cairo_create(surface_); }
  ~CairoCanvasTest() override {
    cairo_destroy(context_);
    cairo_surface_destroy(surface_);
  }

  std::uint32_t pixel(int x, int y) {
    cairo_surface_flush(surface_);
    const auto* row = cairo_image_surface_get_data(surface_) +
                      std::ptrdiff_t{y} * cairo_image_surface_get_stride(surface_);
    return reinterpret_cast<const std::uint32_t*>(row)[x];
  }
  int alpha(int x, int y) { return static_cast<int>(pixel(x, y) >> 24); }

  static Path rectangle(double left, double top, double right, double bottom) {
    Path path;
    path.moveTo({left, top});
    path.lineTo({right, top});
    path.lineTo({right, bottom});
    path.lineTo({left, bottom});
    path.close();
    return path;
  }

  cairo_surface_t* surface_ = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size, size);
  cairo_t* context_ = nullptr;
};

TEST_F(CairoCanvasTest, AlphaAppliesToFillsAndStrokes) {
  CairoCanvas canvas(context_);
  canvas.setAlpha(0.4);
  canvas.fill(rectangle(0, 0, 10, 10));
  Path line;
  line.moveTo({20, 5});
  line.lineTo({30, 5});
  line.setLineWidth(6);
  canvas.stroke(line);
  canvas.setAlpha(1);
  canvas.fill(rectangle(0, 20, 10, 30));
  EXPECT_EQ(alpha(5, 5), 102);
  EXPECT_EQ(alpha(25, 5), 102);
  EXPECT_EQ(alpha(5, 25), 255);
}

TEST_F(CairoCanvasTest, ColoursAreExact) {
  CairoCanvas canvas(context_);
  canvas.setFillColor(Color::systemRed);
  canvas.fill(rectangle(0, 0, 10, 10));
  canvas.setFillColor(Color::systemGreen);
  canvas.fill(rectangle(10, 0, 20, 10));
  canvas.setFillColor(Color::black);
  canvas.fill(rectangle(20, 0, 30, 10));
  EXPECT_EQ(pixel(5, 5), 0xFFED333BU);
  EXPECT_EQ(pixel(15, 5), 0xFF26A269U);
  EXPECT_EQ(pixel(25, 5), 0xFF000000U);
}

TEST_F(CairoCanvasTest, ClearErasesTheShapeCompletelyAtAnyAlpha) {
  CairoCanvas canvas(context_);
  canvas.fill(rectangle(0, 0, 40, 40));
  canvas.setAlpha(0.4);
  canvas.setBlendMode(BlendMode::clear);
  canvas.fill(rectangle(10, 10, 20, 20));
  canvas.setBlendMode(BlendMode::normal);
  canvas.fill(rectangle(15, 10, 20, 20));
  EXPECT_EQ(pixel(12, 15), 0U);
  EXPECT_EQ(alpha(17, 15), 102);
  EXPECT_EQ(alpha(30, 15), 255);
}

TEST_F(CairoCanvasTest, InnerRectangleIsAHoleWithTheEvenOddRuleOnly) {
  CairoCanvas canvas(context_);
  Path path = rectangle(0, 0, 30, 30);
  path.append(rectangle(10, 10, 20, 20));
  path.setWindingRule(Path::WindingRule::evenOdd);
  canvas.fill(path);
  EXPECT_EQ(alpha(15, 15), 0);
  path.setWindingRule(Path::WindingRule::nonZero);
  canvas.fill(path);
  EXPECT_EQ(alpha(15, 15), 255);
}

TEST_F(CairoCanvasTest, LineWidthIsScaledWithTheCoordinates) {
  CairoCanvas canvas(context_);
  canvas.scale(2, 2);
  Path line;
  line.moveTo({0, 10});
  line.lineTo({20, 10});
  line.setLineWidth(4);
  canvas.stroke(line);
  EXPECT_EQ(alpha(20, 15), 0);
  EXPECT_EQ(alpha(20, 16), 255);
  EXPECT_EQ(alpha(20, 23), 255);
  EXPECT_EQ(alpha(20, 24), 0);
}

TEST_F(CairoCanvasTest, ClosedSingleLineHasThePathsCaps) {
  CairoCanvas canvas(context_);
  Path line;
  line.moveTo({10, 20});
  line.lineTo({30, 20});
  line.close();
  line.setLineWidth(8);
  line.setLineCap(Path::LineCap::butt);
  canvas.stroke(line);
  EXPECT_EQ(alpha(31, 20), 0);
  line.setLineCap(Path::LineCap::round);
  canvas.stroke(line);
  for (const int x : {7, 32}) {
    EXPECT_EQ(alpha(x, 20), 255) << x;
    // Round, not square.
    EXPECT_EQ(alpha(x < 20 ? 6 : 33, 16), 0) << x;
  }
}

TEST_F(CairoCanvasTest, ClosedTriangleKeepsItsThirdSide) {
  CairoCanvas canvas(context_);
  Path triangle;
  triangle.moveTo({5, 5});
  triangle.lineTo({35, 5});
  triangle.lineTo({35, 35});
  triangle.close();
  triangle.setLineWidth(4);
  canvas.stroke(triangle);
  EXPECT_EQ(alpha(20, 20), 255);
}

double luminance(const std::array<double, 3>& colour) {
  std::array<double, 3> linear{};
  for (std::size_t i = 0; i < 3; ++i)
    linear[i] =
        colour[i] <= 0.03928 ? colour[i] / 12.92 : std::pow((colour[i] + 0.055) / 1.055, 2.4);
  return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2];
}

TEST_F(CairoCanvasTest, RedAndGreenStandOutFromWhiteAndFromBlack) {
  for (const Color color : {Color::systemRed, Color::systemGreen}) {
    CairoCanvas canvas(context_);
    canvas.setFillColor(color);
    canvas.fill(rectangle(0, 0, 10, 10));
    const std::uint32_t seen = pixel(5, 5);
    const double light =
        luminance({(seen >> 16 & 0xff) / 255.0, (seen >> 8 & 0xff) / 255.0, (seen & 0xff) / 255.0});
    EXPECT_GE(1.05 / (light + 0.05), 3);
    EXPECT_GE((light + 0.05) / 0.05, 3);
    EXPECT_EQ((seen >> 16 & 0xff) > (seen >> 8 & 0xff), color == Color::systemRed);
  }
}

TEST_F(CairoCanvasTest, FillAndStrokeColoursAreKeptApart) {
  CairoCanvas canvas(context_);
  canvas.setFillColor(Color::systemRed);
  canvas.setStrokeColor(Color::systemGreen);
  canvas.fill(rectangle(0, 0, 10, 10));
  Path line;
  line.moveTo({20, 5});
  line.lineTo({30, 5});
  line.setLineWidth(6);
  canvas.stroke(line);
  EXPECT_EQ(pixel(5, 5), 0xffed333b);
  EXPECT_EQ(pixel(25, 5), 0xff26a269);
}

TEST_F(CairoCanvasTest, ContextInAnErrorStateDrawsNothing) {
  cairo_surface_finish(surface_);
  CairoCanvas canvas(context_);
  canvas.scale(0, 0);
  canvas.fill(rectangle(0, 0, 10, 10));
  canvas.stroke(rectangle(0, 0, 10, 10));
}

}  // namespace
}  // namespace hushbox
