#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hushbox::doubles {

/// What a scripted child does.
struct TaskScript {
  std::string output{};
  /// Neither exits nor closes its output before `endHangingTasks()`.
  bool hangs = false;
};

/// Launching this program with these arguments plays a script. Programs without a script really
/// run.
void scriptTask(const std::string& path, const std::vector<std::string>& arguments,
                TaskScript script);

/// Ends the hanging scripted children.
void endHangingTasks();

/// Returns how many children were launched, including scripted ones.
std::size_t launchedTasks();

void resetTasks();

}  // namespace hushbox::doubles
