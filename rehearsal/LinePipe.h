#pragma once

#include <string>

namespace hushbox::rehearsal {

/// A pipe through which a starting server tells one line, such as its address or display number.
class LinePipe {
 public:
  /// Throws DeskError when no pipe can be made.
  LinePipe();
  ~LinePipe();
  LinePipe(const LinePipe&) = delete;
  LinePipe& operator=(const LinePipe&) = delete;

  /// The end to hand to the server.
  int writeEnd() const { return writeEnd_; }

  /// Takes in what has arrived; true once a whole line has.
  bool hasLine();
  /// The line without its line break.
  std::string line() const;

 private:
  int readEnd_ = -1;
  int writeEnd_ = -1;
  std::string text_;
};

}  // namespace hushbox::rehearsal
