#pragma once

#include <string_view>

namespace hushbox {

/// The application's bundle identifier: what the log, the login item and the packages know it by.
/// The build scripts read it from this line.
inline constexpr std::string_view bundleIdentifier = "org.hushbox.Hushbox";

}  // namespace hushbox
