#pragma once

#include <string>
#include <string_view>

namespace hushbox {

/// `text` as a panel may show it, and as the bus takes it: well-formed UTF-8 without NUL, on one
/// line, every control character spelt out.
std::string panelText(std::string_view text);

}  // namespace hushbox
