#pragma once

#include <cstdint>

#include "platform/Canvas.h"

namespace hushbox {

struct Rgb {
  std::uint8_t red, green, blue;
};

/// The colours on Linux desktops. The red and the green are those of GNOME's palette, which stand
/// out from dark and light panels.
constexpr Rgb rgbOf(Color color) {
  switch (color) {
    case Color::systemRed:
      return {0xed, 0x33, 0x3b};
    case Color::systemGreen:
      return {0x26, 0xa2, 0x69};
    case Color::black:
      break;
  }
  return {0, 0, 0};
}

}  // namespace hushbox
