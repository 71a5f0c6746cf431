#pragma once

#include <map>
#include <string>

namespace hushbox::doubles {

/// Returns how often each C function of the platform and the most expensive methods were called
/// since `resetCalls()`, by name. Main thread only.
std::map<std::string, int> calls();
void resetCalls();

/// Counts a call. Any thread.
void count(const char* name);

}  // namespace hushbox::doubles
