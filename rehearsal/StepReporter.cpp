#include "rehearsal/StepReporter.h"

#include <cstdio>
#include <exception>

namespace hushbox::rehearsal {

void StepReporter::run(const std::string& title, const std::function<std::string()>& step) {
  std::printf("%2d. %s\n", passed_ + failed_ + skipped_ + 1, title.c_str());
  std::fflush(stdout);
  if (failed_ > 0) {
    std::printf("    skipped\n");
    ++skipped_;
    return;
  }
  try {
    std::printf("    %s\n", step().c_str());
    ++passed_;
  } catch (const std::exception& error) {
    std::printf("    FAILED: %s\n", error.what());
    ++failed_;
  }
  std::fflush(stdout);
}

void StepReporter::printSummary() const {
  std::printf("%d steps passed, %d failed", passed_, failed_);
  if (skipped_ > 0) std::printf(", %d skipped", skipped_);
  std::printf(".\n");
}

}  // namespace hushbox::rehearsal
