#pragma once

#include <string_view>

#include "platform/linux/menubar/ColorScheme.h"

namespace hushbox {

/// The presumed tone of the panel that shows the icon.
enum class PanelTone { unknown, dark, light };

/// Panels do not report their colours, so this guesses from the desktop's colour scheme, which is
/// about windows but mostly fits panels too, and from its name in XDG_CURRENT_DESKTOP, such as
/// "ubuntu:GNOME": GNOME's bar is black in both schemes.
PanelTone guessPanelTone(ColorScheme scheme, std::string_view desktop);

}  // namespace hushbox
