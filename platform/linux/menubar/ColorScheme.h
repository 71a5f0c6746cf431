#pragma once

namespace hushbox {

/// What the user's desktop says about light and dark; the figures of the desktop portal's setting
/// "color-scheme".
enum class ColorScheme { noPreference = 0, preferDark = 1, preferLight = 2 };

}  // namespace hushbox
