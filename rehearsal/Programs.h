#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace hushbox::rehearsal {

/// The full path of an installed program, looked up in $PATH. A name with a slash is used as it is.
///
/// Throws DeskError if the program is missing; the message says what to do, such as "dunst is not
/// installed: run script/bootstrap".
std::string findProgram(std::string_view name);

/// The same for the first of several names that is installed. If none is, the message names the
/// last.
std::string findProgram(const std::vector<std::string>& names);

/// Whether a program is installed; never throws.
bool isInstalled(std::string_view name);

}  // namespace hushbox::rehearsal
