#pragma once

#include <stdexcept>

namespace hushbox::doubles {

/// An Objective-C exception, which is also a C++ exception on 64-bit systems. On a Mac nothing
/// would catch it, and the program would abort.
class RaisedException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace hushbox::doubles
