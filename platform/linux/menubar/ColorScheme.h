#pragma once

namespace hushbox {

/// The user's preference for light or dark, with the values of the desktop portal's "color-scheme".
enum class ColorScheme { noPreference = 0, preferDark = 1, preferLight = 2 };

}  // namespace hushbox
