#include "app/LuchadorArt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "platform/simulated/RecordingCanvas.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

// The points of a curve are its first control point, its second and its end.
const std::string mask =
    "fill evenOdd: M 50 4 C 76 4 92 22 92 46 C 92 70 76 92 50 96 C 24 92 8 70 8 46 "
    "C 8 22 24 4 50 4 Z"
    " M 20 45 C 25 35 39 35 45 47 C 38 55 26 55 20 45 Z"
    " M 80 45 C 75 35 61 35 55 47 C 62 55 74 55 80 45 Z"
    " M 37 73 C 44 68 56 68 63 73 C 58 82 42 82 37 73 Z"
    " M 50 11 L 58 22 L 50 33 L 42 22 Z";
const std::string slash = " cap round: M 10 6 L 94 94 Z";

Lines drawn(const Image& image) {
  RecordingCanvas canvas;
  EXPECT_TRUE(image.draw(&canvas));
  return canvas.lines();
}

TEST(LuchadorArtTest, ImageIs18PointsSquareAndFlipped) {
  const Image image = LuchadorArt::menuBarImage(false, true, std::nullopt);
  EXPECT_EQ(image.width, 18);
  EXPECT_EQ(image.height, 18);
  EXPECT_TRUE(image.flipped);
}

TEST(LuchadorArtTest, IsATemplateOnlyWithoutATint) {
  EXPECT_TRUE(LuchadorArt::menuBarImage(false, true, std::nullopt).isTemplate);
  EXPECT_TRUE(LuchadorArt::menuBarImage(true, false, std::nullopt).isTemplate);
  EXPECT_FALSE(LuchadorArt::menuBarImage(true, true, Color::systemRed).isTemplate);
  EXPECT_FALSE(LuchadorArt::menuBarImage(false, true, Color::systemGreen).isTemplate);
  EXPECT_FALSE(LuchadorArt::menuBarImage(false, true, Color::black).isTemplate);
}

TEST(LuchadorArtTest, EachStateHasItsName) {
  const auto name = [](bool muted, bool connected, std::optional<Color> tint = {}) {
    return LuchadorArt::menuBarImage(muted, connected, tint).name;
  };
  EXPECT_EQ(name(false, true), "org.hushbox.Hushbox.mask");
  EXPECT_EQ(name(true, true), "org.hushbox.Hushbox.mask-muted");
  EXPECT_EQ(name(false, false), "org.hushbox.Hushbox.mask-disconnected");
  EXPECT_EQ(name(true, false), "org.hushbox.Hushbox.mask-muted-disconnected");
  EXPECT_EQ(name(false, true, Color::systemGreen), "org.hushbox.Hushbox.green");
  EXPECT_EQ(name(true, true, Color::systemRed), "org.hushbox.Hushbox.red-muted");
}

TEST(LuchadorArtTest, MaskHasFourHolesByTheEvenOddRule) {
  EXPECT_THAT(drawn(LuchadorArt::menuBarImage(false, true, std::nullopt)),
              ElementsAre("scale 0.18 0.18", "fill color black", mask));
}

TEST(LuchadorArtTest, MutedMaskHasASlashInAnErasedBand) {
  EXPECT_THAT(drawn(LuchadorArt::menuBarImage(true, true, std::nullopt)),
              ElementsAre("scale 0.18 0.18", "fill color black", mask, "blend clear",
                          "stroke width 22" + slash, "blend normal", "stroke color black",
                          "stroke width 10" + slash));
}

TEST(LuchadorArtTest, EveryCombinationDrawsTheExpectedSteps) {
  for (const bool muted : {false, true}) {
    for (const bool connected : {false, true}) {
      for (const auto& [tint, name] :
           {std::pair<std::optional<Color>, std::string>{std::nullopt, "black"},
            {Color::systemRed, "systemRed"},
            {Color::systemGreen, "systemGreen"}}) {
        Lines expected = {"scale 0.18 0.18"};
        if (!connected) expected.push_back("alpha 0.4");
        expected.push_back("fill color " + name);
        expected.push_back(mask);
        if (muted) {
          for (const std::string& line :
               {std::string("blend clear"), "stroke width 22" + slash, std::string("blend normal"),
                "stroke color " + name, "stroke width 10" + slash}) {
            expected.push_back(line);
          }
        }
        EXPECT_THAT(drawn(LuchadorArt::menuBarImage(muted, connected, tint)),
                    ElementsAreArray(expected));
      }
    }
  }
}

TEST(LuchadorArtTest, DrawingWithoutACanvasReturnsFalse) {
  EXPECT_FALSE(LuchadorArt::menuBarImage(true, false, Color::systemRed).draw(nullptr));
}

TEST(LuchadorArtTest, EachRenderingDrawsAgain) {
  const Image image = LuchadorArt::menuBarImage(true, false, Color::systemRed);
  const Image copy = image;
  EXPECT_EQ(drawn(image), drawn(image));
  EXPECT_EQ(drawn(copy), drawn(image));
}

}  // namespace
}  // namespace hushbox
