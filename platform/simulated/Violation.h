#pragma once

#include <functional>
#include <string>

namespace hushbox {

using ViolationHandler = std::function<void(const std::string& sentence)>;

/// Tells that something was done that no platform allows, or that would hang or crash a real one.
/// Ends the program with the sentence on standard error, unless a handler is set.
void reportViolation(const std::string& sentence);

/// Sets who hears of violations from now on and returns who did until then; empty for ending the
/// program. Meant for the simulated platform's own tests.
ViolationHandler setViolationHandler(ViolationHandler handler);

}  // namespace hushbox
