#include "app/LuchadorArt.h"

#include <string>

#include "support/BundleIdentifier.h"

namespace hushbox {
namespace {

/// Points per design unit: the mask is designed on 100 by 100 units, y downward, and shown at 18 by
/// 18 points.
constexpr double scale = 0.18;

Path head() {
  Path path;
  path.moveTo({50, 4});
  path.curveTo({92, 46}, {76, 4}, {92, 22});
  path.curveTo({50, 96}, {92, 70}, {76, 92});
  path.curveTo({8, 46}, {24, 92}, {8, 70});
  path.curveTo({50, 4}, {8, 22}, {24, 4});
  path.close();
  return path;
}

Path leftEye() {
  Path path;
  path.moveTo({20, 45});
  path.curveTo({45, 47}, {25, 35}, {39, 35});
  path.curveTo({20, 45}, {38, 55}, {26, 55});
  path.close();
  return path;
}

Path rightEye() {
  Path path = leftEye();
  path.transform({.m11 = -1, .m12 = 0, .m21 = 0, .m22 = 1, .tX = 100, .tY = 0});
  return path;
}

Path mouth() {
  Path path;
  path.moveTo({37, 73});
  path.curveTo({63, 73}, {44, 68}, {56, 68});
  path.curveTo({37, 73}, {58, 82}, {42, 82});
  path.close();
  return path;
}

Path diamond() {
  Path path;
  path.moveTo({50, 11});
  path.lineTo({58, 22});
  path.lineTo({50, 33});
  path.lineTo({42, 22});
  path.close();
  return path;
}

Path mask() {
  Path path = head();
  path.append(leftEye());
  path.append(rightEye());
  path.append(mouth());
  path.append(diamond());
  // The even-odd rule turns the eyes, the mouth and the diamond into holes.
  path.setWindingRule(Path::WindingRule::evenOdd);
  return path;
}

void drawSlash(Canvas& canvas, Color color) {
  Path slash;
  slash.moveTo({10, 6});
  slash.lineTo({94, 94});
  slash.close();
  slash.setLineCap(Path::LineCap::round);
  // Erase a wider band first, to separate the slash from the mask.
  canvas.setBlendMode(BlendMode::clear);
  slash.setLineWidth(22);
  canvas.stroke(slash);
  canvas.setBlendMode(BlendMode::normal);
  slash.setLineWidth(10);
  canvas.setStrokeColor(color);
  canvas.stroke(slash);
}

/// The first word of an image's name.
const char* stem(std::optional<Color> tint) {
  if (!tint) return "mask";
  switch (*tint) {
    case Color::systemRed:
      return "red";
    case Color::systemGreen:
      return "green";
    case Color::black:
      break;
  }
  return "black";
}

}  // namespace

Image LuchadorArt::menuBarImage(bool muted, bool connected, std::optional<Color> tint) {
  Image image;
  image.width = 18;
  image.height = 18;
  image.flipped = true;
  image.isTemplate = !tint;
  // Icon themes shorten a name that they don't find at its last dash, and some look for the colour
  // version of a symbolic icon first. So no name may be shortened to that of another picture, such
  // as the application's icon or that of another tint.
  image.name = std::string(bundleIdentifier) + '.' + stem(tint) + (muted ? "-muted" : "") +
               (connected ? "" : "-disconnected");
  image.draw = [muted, connected, color = tint.value_or(Color::black)](Canvas* canvas) {
    if (!canvas) return false;
    canvas->scale(scale, scale);
    if (!connected) canvas->setAlpha(0.4);
    canvas->setFillColor(color);
    canvas->fill(mask());
    if (muted) drawSlash(*canvas, color);
    return true;
  };
  return image;
}

}  // namespace hushbox
