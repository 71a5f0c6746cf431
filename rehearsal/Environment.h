#pragma once

#include <map>
#include <string>

namespace hushbox::rehearsal {

/// The environment variables of a process, by name.
using Environment = std::map<std::string, std::string>;

}  // namespace hushbox::rehearsal
