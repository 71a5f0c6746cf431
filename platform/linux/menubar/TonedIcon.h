#pragma once

#include <optional>
#include <string_view>

#include "platform/linux/menubar/PanelTone.h"
#include "platform/linux/menubar/Rgb.h"

namespace hushbox {

/// How a template is drawn for a panel whose tone is known. The edge, in the opposite tone, is
/// invisible if the tone is right, and the outline of the shape if it is wrong.
struct TonedIcon {
  Rgb fill;
  Rgb edge;
  /// Of an icon's own file, after the name of the image. Without a dash; see
  /// LuchadorArt::menuBarImage.
  std::string_view suffix;

  /// Not quite opaque, which looks softer on a panel that is neither dark nor light.
  static constexpr double edgeOpacity = 0.8;
  /// As a share of the icon's size.
  static constexpr double edgeWidth = 0.05;

  static constexpr std::optional<TonedIcon> on(PanelTone panel) {
    constexpr Rgb white{0xff, 0xff, 0xff}, black{0x00, 0x00, 0x00};
    // The colour of symbolic icons on light panels in the Adwaita theme.
    constexpr Rgb darkGrey{0x2e, 0x34, 0x36};
    switch (panel) {
      case PanelTone::dark:
        return TonedIcon{white, black, ".white"};
      case PanelTone::light:
        return TonedIcon{darkGrey, white, ".darkgrey"};
      case PanelTone::unknown:
        break;
    }
    return std::nullopt;
  }
};

}  // namespace hushbox
