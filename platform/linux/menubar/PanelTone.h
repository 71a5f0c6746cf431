#pragma once

#include <string_view>

#include "platform/linux/menubar/ColorScheme.h"

namespace hushbox {

/// What the panel that an icon lies on is taken for.
enum class PanelTone { unknown, dark, light };

/// Nobody tells an item what its panel looks like, so this is a guess, from the desktop's colour
/// scheme (it speaks of windows; a panel mostly goes with them) and from its name, as
/// XDG_CURRENT_DESKTOP has it ("ubuntu:GNOME"): GNOME's bar is black in either scheme.
PanelTone guessPanelTone(ColorScheme scheme, std::string_view desktop);

}  // namespace hushbox
