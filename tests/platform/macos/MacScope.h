#pragma once

#include "tests/platform/macos/MacFixture.h"

namespace hushbox {

/// A fresh Mac for the driver of a contract, as MacFixture is for a test. Resets the doubles on
/// destruction.
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
