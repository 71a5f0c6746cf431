#include "platform/simulated/RecordingCanvas.h"

#include <gmock/gmock.h>

namespace hushbox {
namespace {

TEST(RecordingCanvasTest, RecordsEveryOperationWithItsArguments) {
  Path path;
  path.moveTo({0, 0});
  path.lineTo({1, 0.5});
  path.curveTo({2, 2}, {0.1, 0.2}, {0.3, 0.4});
  path.close();
  path.setWindingRule(Path::WindingRule::evenOdd);
  path.setLineWidth(0.1);
  path.setLineCap(Path::LineCap::round);
  RecordingCanvas canvas;
  canvas.scale(18, 9);
  canvas.setAlpha(0.4);
  canvas.setBlendMode(BlendMode::clear);
  canvas.setBlendMode(BlendMode::normal);
  canvas.setFillColor(Color::systemRed);
  canvas.setStrokeColor(Color::systemGreen);
  canvas.setFillColor(Color::black);
  canvas.fill(path);
  canvas.stroke(path);
  EXPECT_EQ(canvas.lines(),
            (Lines{"scale 18 9", "alpha 0.4", "blend clear", "blend normal", "fill color systemRed",
                   "stroke color systemGreen", "fill color black",
                   "fill evenOdd: M 0 0 L 1 0.5 C 0.1 0.2 0.3 0.4 2 2 Z",
                   "stroke width 0.1 cap round: M 0 0 L 1 0.5 C 0.1 0.2 0.3 0.4 2 2 Z"}));
}

}  // namespace
}  // namespace hushbox
