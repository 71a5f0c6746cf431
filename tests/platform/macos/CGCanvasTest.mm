// The operations that the art performs on the current context.

#include <gtest/gtest.h>

#include "app/LuchadorArt.h"
#include "platform/macos/StatusItemMenuBar.h"
#include "platform/simulated/RecordingCanvas.h"
#include "tests/platform/macos/MacFixture.h"

namespace hushbox {
namespace {

class CGCanvasTest : public MacFixture {
 protected:
  /// Returns what was drawn, in the format of RecordingCanvas.
  Lines drawn(const Image& image) {
    StatusItemMenuBar menuBar;
    menuBar.setIcon(image, "");
    EXPECT_TRUE(doubles::render(doubles::statusItem().button.image));
    return doubles::drawing();
  }
  Lines recorded(const Image& image) {
    RecordingCanvas canvas;
    EXPECT_TRUE(image.draw(&canvas));
    return canvas.lines();
  }
};

TEST_F(CGCanvasTest, DrawsEveryStateOfTheArt) {
  for (const bool muted : {false, true})
    for (const bool connected : {false, true})
      for (const std::optional<Color> tint :
           {std::optional<Color>(), std::optional(Color::systemRed),
            std::optional(Color::systemGreen)}) {
        const Image image = LuchadorArt::menuBarImage(muted, connected, tint);
        EXPECT_EQ(drawn(image), recorded(image));
      }
}

TEST_F(CGCanvasTest, PathKeepsItsWidthCapAndWindingRule) {
  Image image{.width = 18, .height = 18};
  image.draw = [](Canvas* canvas) {
    Path path;
    path.moveTo({0, 0});
    path.lineTo({1, 0.5});
    path.curveTo({2, 2}, {0.1, 0.2}, {0.3, 0.4});
    path.setLineWidth(0.1);
    canvas->scale(18, 9);
    canvas->setFillColor(Color::systemRed);
    canvas->setStrokeColor(Color::systemGreen);
    canvas->fill(path);
    canvas->stroke(path);
    return true;
  };
  EXPECT_EQ(drawn(image), recorded(image));
}

}  // namespace
}  // namespace hushbox
