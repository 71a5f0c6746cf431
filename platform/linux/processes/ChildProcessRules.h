#pragma once

#include <sys/eventfd.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <string>

#include "platform/linux/Descriptor.h"

namespace hushbox {

/// What applies to every child process of the program. Each child process shares it and may outlive
/// the factory. Any thread.
struct ChildProcessRules {
  /// For the path of a tool that this system does not have, the path of the program that prints the
  /// same report here. Other paths are run unchanged.
  std::map<std::string, std::string> standIns;

  /// From launch to exit. A report takes milliseconds, and one that hangs must be over well before
  /// the next, a minute later.
  std::chrono::milliseconds timeout{10'000};

  /// For standard output: hundreds of times the size of a report with every accessory.
  std::size_t maxOutputBytes = std::size_t{1} << 20;

  /// An eventfd, raised once when the program ends: from then on no child is waited for.
  Descriptor ending{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
};

}  // namespace hushbox
