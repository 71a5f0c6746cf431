#pragma once

#include <sys/types.h>

#include <map>
#include <string>

namespace hushbox {

/// What a running process costs, from /proc.
class ProcessCost {
 public:
  explicit ProcessCost(pid_t process) : folder_("/proc/" + std::to_string(process)) {}

  /// The memory that it has for itself alone, in KiB.
  long privateMemory() const;

  /// Counts voluntary context switches from the first call on. The kernel forgets a thread's when
  /// the thread ends, so the more often this is called, the less is missed of short-lived ones.
  void sample();
  long switches() const;

 private:
  struct Thread {
    long first = 0;
    long last = 0;
  };

  std::string folder_;
  bool sampled_ = false;
  std::map<std::string, Thread> threads_;
};

}  // namespace hushbox
