#pragma once

#include <cstdint>
#include <vector>

#include "platform/Image.h"
#include "platform/linux/menubar/PanelTone.h"

namespace hushbox {

/// A square picture in the format of status items: rows from the top, four bytes per pixel in the
/// order alpha, red, green, blue, not premultiplied.
///
/// **How a template is recoloured.** On a panel of unknown tone it is grey, with a contrast of at
/// least 3:1 to panels from white to light grey and from dark grey to black. On a dark or light
/// panel it is white or dark grey, like its neighbours. Because the tone is a guess (see
/// PanelTone), it then has a thin edge in the opposite tone: invisible if the guess is right, and
/// the outline of the shape if it is wrong. Images that are not templates keep their own colours.
struct IconPixmap {
  /// In pixels, each way.
  int size = 0;
  std::vector<std::uint8_t> bytes;

  /// Draws `image` to fill the square; where it draws nothing, the square is transparent.
  static IconPixmap render(const Image& image, int size, PanelTone panel);

  friend bool operator==(const IconPixmap&, const IconPixmap&) = default;
};

}  // namespace hushbox
