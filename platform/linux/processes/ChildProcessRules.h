#pragma once

#include <sys/eventfd.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

#include "platform/linux/Descriptor.h"

namespace hushbox {

/// What holds for every child process of the program; shared with each, which may be the last to
/// go. Any thread.
struct ChildProcessRules {
  /// Paths of tools that this system does not have, with those of the programs that print the same
  /// report here. Other paths are run as they stand.
  std::map<std::string, std::string> standIns;

  /// From launch to exit. A report takes milliseconds, and a hung one must be over well before the
  /// next is asked for a minute later.
  std::chrono::milliseconds timeLimit{10'000};

  /// Of standard output, in bytes: hundreds of times what a report with every accessory holds.
  std::size_t outputLimit = std::size_t{1} << 20;

  /// An eventfd, raised for good when the program ends and no child is to be waited for.
  Descriptor ending{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

}  // namespace hushbox
