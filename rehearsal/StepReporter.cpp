#include "rehearsal/StepReporter.h"

#include <cstdio>
#include <exception>

namespace hushbox::rehearsal {

void StepReporter::step(const std::string& what, const std::function<std::string()>& act) {
  std::printf("%2d. %s\n", succeeded_ + failed_ + 1, what.c_str());
  std::fflush(stdout);
  if (failed_ > 0) {
    std::printf("    not played\n");
    ++failed_;
    return;
  }
  try {
    std::printf("    %s\n", act().c_str());
    ++succeeded_;
  } catch (const std::exception& error) {
    std::printf("    FAILED: %s\n", error.what());
    ++failed_;
  }
  std::fflush(stdout);
}

}  // namespace hushbox::rehearsal
