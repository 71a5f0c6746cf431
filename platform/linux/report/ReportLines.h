#pragma once

#include <string>
#include <vector>

namespace hushbox {

/// Lines of the report, without line feeds, each safe to print on a terminal. They contain no name
/// of a person, a meeting or a page: a bug report may contain them.
using ReportLines = std::vector<std::string>;

/// The path with the home folder, which contains the user's name, as "~".
std::string withoutHome(const std::string& path);

}  // namespace hushbox
