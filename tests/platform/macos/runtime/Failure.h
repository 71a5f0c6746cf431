#pragma once

#include <string>

namespace hushbox::doubles {

/// Prints the message to standard error and aborts, after a mistake of the adapters that would
/// crash on a Mac or, worse, go unnoticed there. Any thread.
[[noreturn]] void fail(const std::string& sentence);

}  // namespace hushbox::doubles
