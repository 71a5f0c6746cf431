#pragma once

#include <sys/types.h>

#include <map>
#include <string>

namespace hushbox {

/// The memory and the context switches of a running process, from /proc.
class ProcessCost {
 public:
  explicit ProcessCost(pid_t process) : folder_("/proc/" + std::to_string(process)) {}

  /// The memory that the process does not share with others, in KiB.
  long privateMemory() const;
  /// The processor time of all threads so far, also of those that have exited, in milliseconds. The
  /// kernel counts in steps of 10 ms.
  double processorTime() const;
  std::size_t threads() const { return countOf("task"); }
  std::size_t descriptors() const { return countOf("fd"); }

  /// Reads every thread's count of voluntary context switches. The kernel drops a thread's count
  /// when the thread exits, so call this often to miss little of short-lived threads.
  void sample();
  /// Voluntary context switches of all threads between the first and the last sample().
  long switches() const;

 private:
  struct Thread {
    long first = 0;
    long last = 0;
  };

  std::size_t countOf(const char* entries) const;

  std::string folder_;
  bool sampled_ = false;
  std::map<std::string, Thread> threads_;
};

}  // namespace hushbox
