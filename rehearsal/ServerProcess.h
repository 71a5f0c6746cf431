#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "rehearsal/Environment.h"
#include "rehearsal/Waiting.h"

namespace hushbox::rehearsal {

/// A running server program in a process group of its own. The destructor stops it.
///
/// The kernel kills the child when the thread that started it exits, so no server outlives a test
/// program that crashes. Start servers on a thread that lives long enough, such as the main thread.
/// The child inherits no descriptors except those in Launch::descriptors.
class ServerProcess {
 public:
  struct Launch {
    std::vector<std::string> command;  ///< Program (a path, or a name in $PATH) and arguments.
    Environment environment;           ///< The whole environment; nothing is inherited.
    std::filesystem::path log;         ///< Standard output and error are appended to this file.
    /// Pairs of a descriptor in this process and its number in the child.
    std::vector<std::pair<int, int>> descriptors;
  };

  /// Starts the program. Throws DeskError if it is not installed or no process can be created. If
  /// it exits at once, isRunning() returns false.
  explicit ServerProcess(Launch launch);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  /// The process id. Does not change when the process exits.
  pid_t pid() const { return pid_; }
  bool isRunning() const;

  /// Waits for the process to exit by itself and returns its exit status. Throws DeskError at the
  /// deadline, and if a signal killed the process.
  int waitForExit(Milliseconds deadline = serverTimeout) const;

  /// Sends SIGTERM to the process and its group, and SIGKILL at the deadline.
  void stop(Milliseconds deadline = Milliseconds{2000});
  /// Sends SIGKILL to the process and its group, as in a crash.
  void kill();

  /// Sends SIGSTOP to the group and waits until the main process has stopped.
  void freeze();
  /// Continues a frozen group (SIGCONT).
  void thaw();

  /// Like waitUntil(), but throws at once if the process exits. The DeskError contains the end of
  /// the process's log.
  void waitUntilReady(const std::function<bool()>& predicate, std::string_view awaited,
                      Milliseconds deadline = serverTimeout) const;

 private:
  void signalGroup(int signal) const;
  void killGroupAndReap();
  /// The end of the log, to append to an error message.
  std::string logTail() const;

  Launch launch_;
  pid_t pid_ = -1;
  bool reaped_ = false;
};

}  // namespace hushbox::rehearsal
