// Draws Hushbox.app's icon: the mask of the menu bar on a dark tile.
//
//   hushbox-icon FILE.icns

#include <cstdio>
#include <fstream>
#include <optional>

#include "app/LuchadorArt.h"
#include "packaging/macos/icon/IconCanvas.h"
#include "packaging/macos/icon/IconFile.h"

namespace hushbox {
namespace {

/// The sizes of an application's icon and their types in an icon file. Several types have the same
/// size: one is for single and one for double resolution. The types of 16 and 32 points at single
/// resolution are left out, since macOS draws them garbled if they are PNG files; it scales ic11.
struct Size {
  const char* type;
  int pixels;
};
constexpr Size sizes[] = {{"ic07", 128}, {"ic08", 256}, {"ic09", 512}, {"ic11", 32},
                          {"ic12", 64},  {"ic13", 256}, {"ic14", 512}, {"ic10", 1024}};

/// The tile on a grid of 1024, with the margins and corners of the system's own icons.
Path tile() {
  constexpr double near = 100, far = 924, radius = 185, handle = radius * 0.4477;
  Path path;
  path.moveTo({near + radius, near});
  path.lineTo({far - radius, near});
  path.curveTo({far, near + radius}, {far - handle, near}, {far, near + handle});
  path.lineTo({far, far - radius});
  path.curveTo({far - radius, far}, {far, far - handle}, {far - handle, far});
  path.lineTo({near + radius, far});
  path.curveTo({near, far - radius}, {near + handle, far}, {near, far - handle});
  path.lineTo({near, near + radius});
  path.curveTo({near + radius, near}, {near, near + handle}, {near + handle, near});
  path.close();
  return path;
}

IconCanvas picture(int pixels) {
  IconCanvas canvas(pixels);
  canvas.scale(pixels / 1024.0, pixels / 1024.0);
  canvas.fill(tile(), {0x2B, 0x2D, 0x42});
  constexpr double side = 620;
  canvas.translate((1024 - side) / 2, (1024 - side) / 2);
  const Image mask = LuchadorArt::menuBarImage(false, true, std::nullopt);
  canvas.scale(side / mask.width, side / mask.height);
  mask.draw(&canvas);
  return canvas;
}

int write(const char* path) {
  IconFile icon;
  for (const Size& size : sizes) icon.add(size.type, picture(size.pixels));
  std::ofstream file(path, std::ios::binary);
  file << icon.bytes() << std::flush;
  if (file) return 0;
  std::fprintf(stderr, "hushbox-icon: can't write %s.\n", path);
  return 1;
}

}  // namespace
}  // namespace hushbox

int main(int count, char** arguments) {
  if (count == 2) return hushbox::write(arguments[1]);
  std::fprintf(stderr, "hushbox-icon FILE.icns\n");
  return 2;
}
