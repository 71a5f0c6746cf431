#pragma once

#include <csignal>
#include <memory>
#include <string>

#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// The program itself, running in a session of the desk, with what it logs to standard error.
class HushboxProcess {
 public:
  /// Starts it and returns once its first record is written. Throws DeskError when it ends instead.
  HushboxProcess(const Session& session, const std::string& program);

  /// All that it has logged so far.
  std::string log() const;

  /// Waits until it logs `text` for the `count`th time since `mark()`, and returns that line.
  std::string waitForLog(const std::string& text, int count = 1) const;

  /// Forgets the log up to here for `waitForLog`.
  void mark();

  pid_t pid() const { return process_->pid(); }

  /// Asks it to end by a signal and returns its exit status.
  int quit(int signal = SIGTERM);
  /// Waits for it to end and returns its exit status. Throws DeskError when a signal ended it.
  int waitForEnd() const { return process_->waitForExit(); }

 private:
  std::string path_;
  std::size_t mark_ = 0;
  std::unique_ptr<ServerProcess> process_;
};

}  // namespace hushbox::rehearsal
