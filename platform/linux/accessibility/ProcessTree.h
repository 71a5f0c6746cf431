#pragma once

#include <cstdint>

/// Which process started which, as the kernel reports it in /proc. Any thread.
namespace hushbox::process_tree {

/// Whether the process is `ancestor` itself, or was started by it or by a process that was. False
/// for a process that has exited.
bool isWithin(std::int32_t process, std::int32_t ancestor);

}  // namespace hushbox::process_tree
