#pragma once

#include <sys/types.h>

#include <cstddef>

namespace hushbox::rehearsal {

/// What a process holds at one moment.
struct ProcessFigures {
  /// Memory that only this process has written. Pages of the program's file are left out: they
  /// count as private or shared depending on who else runs it.
  long writtenKibibytes = 0;
  /// The above and those pages of files.
  long privateKibibytes = 0;
  std::size_t descriptors = 0;
  std::size_t threads = 0;

  /// Reads /proc. Throws DeskError if the process has exited.
  static ProcessFigures of(pid_t process);
};

}  // namespace hushbox::rehearsal
