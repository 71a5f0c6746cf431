#include "tests/platform/macos/runtime/Failure.h"

#include <cstdio>
#include <cstdlib>

namespace hushbox::doubles {

void fail(const std::string& sentence) {
  std::fprintf(stderr, "macOS double: %s\n", sentence.c_str());
  std::abort();
}

}  // namespace hushbox::doubles
