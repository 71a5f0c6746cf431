#pragma once

#include <csignal>
#include <memory>
#include <string>

#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// The Hushbox program, running in a session, and the log that it writes to standard error.
class HushboxProcess {
 public:
  /// Starts the program, with `additions` to the session's environment, and waits for its first log
  /// record. Throws DeskError if the program exits or logs nothing.
  HushboxProcess(const Session& session, const std::string& program,
                 const Environment& additions = {});

  /// Everything logged so far.
  std::string log() const;

  /// Waits until `text` has been logged `count` times since `mark()`, and returns the last of those
  /// lines. Throws DeskError if the program exits first, or at the deadline.
  std::string waitForLog(const std::string& text, int count = 1) const;

  /// Makes waitForLog() ignore everything logged so far.
  void mark();

  pid_t pid() const { return process_->pid(); }

  /// Sends the signal, waits for the program to exit and returns its exit status.
  int quit(int signal = SIGTERM);
  /// Waits for the program to exit and returns its exit status. Throws DeskError if a signal killed
  /// it.
  int waitForExit() const { return process_->waitForExit(); }

 private:
  std::string path_;
  std::size_t mark_ = 0;
  std::unique_ptr<ServerProcess> process_;
};

}  // namespace hushbox::rehearsal
