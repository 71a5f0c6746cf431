#pragma once

#include <string>

namespace hushbox::rehearsal {

/// A pipe to which a starting server writes one line, such as its address or display number.
class LinePipe {
 public:
  /// Throws DeskError if no pipe can be created.
  LinePipe();
  ~LinePipe();
  LinePipe(const LinePipe&) = delete;
  LinePipe& operator=(const LinePipe&) = delete;

  /// The descriptor to pass to the server.
  int writeEnd() const { return writeEnd_; }

  /// Reads what has arrived, without blocking. Returns whether a whole line has arrived.
  bool hasLine();
  /// The line without its line break.
  std::string line() const;

 private:
  int readEnd_ = -1;
  int writeEnd_ = -1;
  std::string text_;
};

}  // namespace hushbox::rehearsal
