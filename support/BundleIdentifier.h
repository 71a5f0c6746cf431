#pragma once

#include <string_view>

namespace hushbox {

/// The application's bundle identifier, used by the log, the login item and the packages. The build
/// scripts read it from the line below.
inline constexpr std::string_view bundleIdentifier = "org.hushbox.Hushbox";

}  // namespace hushbox
