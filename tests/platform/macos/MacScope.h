#pragma once

#include "tests/platform/macos/MacFixture.h"

namespace hushbox {

/// What MacFixture does for a test, for the driver of a contract: a fresh Mac, cleared away at the
/// end.
class MacScope {
 public:
  MacScope() { resetDoubles(); }
  ~MacScope() { resetDoubles(); }
  MacScope(const MacScope&) = delete;
  MacScope& operator=(const MacScope&) = delete;

 private:
  doubles::AutoreleasePool pool_;
};

}  // namespace hushbox
