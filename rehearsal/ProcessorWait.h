#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace hushbox::rehearsal {

/// Measures how long the threads of some processes wait for a processor. On a busy machine that
/// decides which of two programs is faster, whatever they do.
class ProcessorWait {
 public:
  /// Whether to measure a thread, by its number and its name (/proc/PID/task/TID/comm).
  using Filter = std::function<bool(pid_t thread, const std::string& name)>;

  /// Starts measuring; all threads of the processes without a filter.
  explicit ProcessorWait(std::vector<pid_t> processes, Filter filter = {})
      : processes_(std::move(processes)), filter_(std::move(filter)), before_(read()) {}

  /// The longest total wait of a single thread since construction, from /proc. Zero where the
  /// kernel does not count it.
  std::chrono::nanoseconds longest() const;

 private:
  /// The total wait of each thread so far.
  std::map<pid_t, std::chrono::nanoseconds> read() const;

  const std::vector<pid_t> processes_;
  const Filter filter_;
  const std::map<pid_t, std::chrono::nanoseconds> before_;
};

}  // namespace hushbox::rehearsal
