#pragma once

#include <stdexcept>

namespace hushbox::rehearsal {

/// Says in one sentence why the rehearsal desk could not be put up or did not do what was awaited.
class DeskError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace hushbox::rehearsal
