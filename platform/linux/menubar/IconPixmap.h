#pragma once

#include <cstdint>
#include <vector>

#include "platform/Image.h"
#include "platform/linux/menubar/PanelTone.h"

namespace hushbox {

/// A square picture as status items carry it: rows from the top, four bytes a pixel in the order
/// alpha, red, green, blue, the colours not multiplied by the alpha.
///
/// **How a template is recoloured.** On a panel of which nothing is known, it is filled in a grey
/// that keeps a contrast of 3:1 and more to panels from white to light grey and from dark grey to
/// black. On a panel that is taken for dark or for light it is white or dark grey, as its
/// neighbours are; and because that may be wrong (see PanelTone), it has a thin edge in the
/// opposite tone, which cannot be seen when it is right and draws the shape when it is not. Images
/// that are no template keep their own colours.
struct IconPixmap {
  /// In pixels, each way.
  int size = 0;
  std::vector<std::uint8_t> bytes;

  /// Draws `image` afresh, filling the square. Where it draws nothing, all is transparent.
  static IconPixmap render(const Image& image, int size, PanelTone panel);

  friend bool operator==(const IconPixmap&, const IconPixmap&) = default;
};

}  // namespace hushbox
