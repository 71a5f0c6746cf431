#include "rehearsal/LinePipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

LinePipe::LinePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) throw DeskError("cannot create a pipe");
  readEnd_ = ends[0];
  writeEnd_ = ends[1];
}

LinePipe::~LinePipe() {
  close(readEnd_);
  close(writeEnd_);
}

bool LinePipe::hasLine() {
  std::array<char, 512> piece{};
  for (ssize_t count = 0; (count = read(readEnd_, piece.data(), piece.size())) > 0;) {
    text_.append(piece.data(), static_cast<std::size_t>(count));
  }
  return text_.find('\n') != std::string::npos;
}

std::string LinePipe::line() const {
  return text_.substr(0, text_.find('\n'));
}

}  // namespace hushbox::rehearsal
