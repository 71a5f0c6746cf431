#pragma once

#include <map>
#include <string>

namespace hushbox::doubles {

/// How often each C function of the platform, and each method worth counting, was called since
/// `resetCalls()`; by its plain name. Main thread only.
std::map<std::string, int> calls();
void resetCalls();

/// Counts one call. Any thread.
void count(const char* name);

}  // namespace hushbox::doubles
