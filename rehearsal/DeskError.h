#pragma once

#include <stdexcept>

namespace hushbox::rehearsal {

/// The rehearsal desk could not be set up or did not do what a caller waited for. what() says why
/// in one sentence.
class DeskError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace hushbox::rehearsal
