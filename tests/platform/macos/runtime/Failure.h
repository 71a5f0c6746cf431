#pragma once

#include <string>

namespace hushbox::doubles {

/// Ends the process with a sentence on standard error: the adapters have made a mistake that a Mac
/// would punish with a crash, or worse, would not. Any thread.
[[noreturn]] void fail(const std::string& sentence);

}  // namespace hushbox::doubles
