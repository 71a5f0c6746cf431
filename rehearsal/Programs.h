#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace hushbox::rehearsal {

/// The full path of an installed program, looked up in $PATH (a name with a slash is taken as is).
///
/// Throws DeskError with the sentence to act on when it is missing, such as "dunst is not
/// installed: run script/bootstrap".
std::string findProgram(std::string_view name);

/// The first of several names that is installed; throws like the above, naming the last one.
std::string findProgram(const std::vector<std::string>& names);

/// Whether a program is installed; never throws.
bool isInstalled(std::string_view name);

}  // namespace hushbox::rehearsal
