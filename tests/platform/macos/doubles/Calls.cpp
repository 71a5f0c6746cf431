#include "tests/platform/macos/doubles/Calls.h"

#include <mutex>

namespace hushbox::doubles {
namespace {

std::mutex mutex;
std::map<std::string, int> counts;

}  // namespace

std::map<std::string, int> calls() {
  const std::lock_guard lock(mutex);
  return counts;
}

void resetCalls() {
  const std::lock_guard lock(mutex);
  counts.clear();
}

void count(const char* name) {
  const std::lock_guard lock(mutex);
  ++counts[name];
}

}  // namespace hushbox::doubles
