#pragma once

#include <memory>
#include <string>

#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// The program itself, running in a session of the desk, with what it logs to standard error.
class Hushbox {
 public:
  /// Starts it and returns once its first record is written. Throws DeskError when it ends instead.
  Hushbox(const Session& session, const std::string& program);

  /// All that it has logged so far.
  std::string log() const;

  /// Waits until it logs `text` for the `count`th time since `mark()`, and returns that line.
  std::string waitForLog(const std::string& text, int count = 1) const;

  /// Forgets the log up to here for `waitForLog`.
  void mark();

  /// Asks it to end (SIGTERM) and returns its exit status.
  int quit();

 private:
  std::string path_;
  std::size_t mark_ = 0;
  std::unique_ptr<ServerProcess> process_;
};

}  // namespace hushbox::rehearsal
