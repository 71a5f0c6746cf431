#pragma once

#include <functional>
#include <string>

namespace hushbox {

using ViolationHandler = std::function<void(const std::string& message)>;

/// Reports a use of the simulated platform that no real platform allows, or that would hang or
/// crash one. Aborts with the message on standard error, unless a handler is set.
void reportViolation(const std::string& message);

/// Sets the handler and returns the previous one; an empty handler aborts the program. For the
/// simulated platform's own tests.
ViolationHandler setViolationHandler(ViolationHandler handler);

}  // namespace hushbox
