#pragma once

#include <string_view>

#include "platform/linux/menubar/ColorScheme.h"

namespace hushbox {

/// The presumed tone of the panel that shows the icon.
enum class PanelTone { unknown, dark, light };

/// Whether XDG_CURRENT_DESKTOP, such as "ubuntu:GNOME", lists the name.
bool namesDesktop(std::string_view desktop, std::string_view name);

/// Panels do not report their colours, so this guesses from the tone of the panel's theme, from the
/// desktop's colour scheme, which is about windows but mostly fits panels too, and from the
/// desktop's name: GNOME's bar is black in both schemes, and the bars of tiling compositors are
/// dark until the user styles them.
PanelTone guessPanelTone(ColorScheme scheme, std::string_view desktop,
                         PanelTone theme = PanelTone::unknown);

/// Whether the desktop's own panel is known to give symbolic icons the colour of its text: those of
/// GNOME, KDE Plasma and Xfce. Those of MATE and LXQt and waybar show the colour in the file.
bool recoloursSymbolicIcons(std::string_view desktop);

/// Whether the desktop's own panel is known to show an item's pixels at scale 1 and enlarge them on
/// a screen of a higher scale, where it draws icons by name sharply: MATE's.
bool enlargesPixels(std::string_view desktop);

}  // namespace hushbox
