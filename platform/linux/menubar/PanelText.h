#pragma once

#include <string>
#include <string_view>

namespace hushbox {

/// `text` made safe for the bus and for a panel: valid UTF-8 without NUL, on one line, with control
/// characters escaped.
std::string panelText(std::string_view text);

}  // namespace hushbox
