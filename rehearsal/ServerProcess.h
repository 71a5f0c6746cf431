#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "rehearsal/Environment.h"
#include "rehearsal/Waiting.h"

namespace hushbox::rehearsal {

/// One running server program, in a process group of its own, that ends with this object.
///
/// The child gets SIGKILL from the kernel when the thread that started it ends, so nothing
/// outlives a test program that crashes: start servers on a thread that lives long enough, such as
/// the main thread. All descriptors are closed in the child except those that are handed over.
class ServerProcess {
 public:
  struct Launch {
    std::vector<std::string> command;  ///< Program (full path, or looked up in $PATH), arguments.
    Environment environment;           ///< The whole environment; nothing is inherited.
    std::filesystem::path log;         ///< Standard output and error go there (appended).
    /// Descriptor of this process, and the number that it gets in the child.
    std::vector<std::pair<int, int>> descriptors;
  };

  /// Starts it. Throws DeskError when the program is missing or no process can be made; a program
  /// that ends at once is seen by isRunning().
  explicit ServerProcess(Launch launch);
  ~ServerProcess();
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;

  /// The process id; stays what it was after the end.
  pid_t pid() const { return pid_; }
  bool isRunning() const;

  /// Waits for it to end by itself and returns its exit status. Throws DeskError when it does not,
  /// or when a signal ended it.
  int waitForExit(Milliseconds deadline = patience) const;

  /// Ends the process and its group: SIGTERM, and SIGKILL when the deadline has passed.
  void stop(Milliseconds deadline = Milliseconds{2000});
  /// Ends the process and its group at once, as a crash would (SIGKILL).
  void kill();

  /// Stops all of the group in its tracks (SIGSTOP); on return the main process stands still.
  void freeze();
  /// Lets a frozen group go on (SIGCONT).
  void thaw();

  /// Waits like waitUntil(), but gives up at once when the process ends; the DeskError then
  /// carries the last lines of its log.
  void waitUntilReady(const std::function<bool()>& predicate, std::string_view awaited,
                      Milliseconds deadline = patience) const;

 private:
  void signalGroup(int signal) const;
  void killGroupAndReap();
  std::string lastWords() const;

  Launch launch_;
  pid_t pid_ = -1;
  bool reaped_ = false;
};

}  // namespace hushbox::rehearsal
