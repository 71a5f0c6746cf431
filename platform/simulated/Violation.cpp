#include "platform/simulated/Violation.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace hushbox {
namespace {

ViolationHandler& currentHandler() {
  static ViolationHandler handler;
  return handler;
}

}  // namespace

void reportViolation(const std::string& message) {
  if (const ViolationHandler handler = currentHandler()) {
    handler(message);
    return;
  }
  std::fprintf(stderr, "simulated platform: %s\n", message.c_str());
  std::abort();
}

ViolationHandler setViolationHandler(ViolationHandler handler) {
  return std::exchange(currentHandler(), std::move(handler));
}

}  // namespace hushbox
