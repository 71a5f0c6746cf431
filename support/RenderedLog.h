#pragma once

#include <array>
#include <initializer_list>
#include <streambuf>
#include <string>
#include <string_view>

#include "support/LogFormat.h"

namespace hushbox {

/// The text of a log record: a format with its conversions replaced by the arguments, the same on
/// every platform. Booleans are true or false, floating-point numbers have six decimals and a
/// point.
///
/// A record is written for every change of the volume, so a text of the usual length is kept
/// without allocating memory.
class RenderedLog : private std::streambuf {
 public:
  RenderedLog(std::string_view format, std::initializer_list<LogArgument> arguments);
  RenderedLog(const RenderedLog&) = delete;
  RenderedLog& operator=(const RenderedLog&) = delete;

  std::string_view text() const;

 private:
  /// Called only with a character: nothing but this class uses the stream buffer.
  int_type overflow(int_type character) override;

  std::array<char, 256> buffer_;
  /// All of the text once it is longer than that.
  std::string longer_;
};

}  // namespace hushbox
