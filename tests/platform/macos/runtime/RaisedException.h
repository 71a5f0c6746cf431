#pragma once

#include <stdexcept>

namespace hushbox::doubles {

/// An Objective-C exception, which is one of C++ too on 64-bit systems. Nothing on a Mac catches
/// it on the way: the program would end.
class RaisedException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace hushbox::doubles
