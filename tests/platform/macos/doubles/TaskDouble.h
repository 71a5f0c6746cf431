#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hushbox::doubles {

/// What a scripted child does.
struct TaskScript {
  std::string output{};
  /// Neither ends nor closes its output until `endHangingTasks()`.
  bool hangs = false;
};

/// Lets `launch` of that program with those arguments play a script. Programs without a script are
/// real ones.
void scriptTask(const std::string& path, const std::vector<std::string>& arguments,
                TaskScript script);

/// Ends the scripted children that hang.
void endHangingTasks();

/// How many children were launched, scripted ones included.
std::size_t launchedTasks();

void resetTasks();

}  // namespace hushbox::doubles
