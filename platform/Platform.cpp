#include "platform/Platform.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace hushbox {
namespace {

std::atomic<const Platform*> current = nullptr;
std::vector<std::function<void()>> closers;

[[noreturn]] void abortWith(const char* message) {
  std::fprintf(stderr, "hushbox: %s\n", message);
  std::abort();
}

}  // namespace

const Platform& platform() {
  const Platform* inScope = current;
  if (!inScope) abortWith("No platform is in scope.");
  return *inScope;
}

PlatformScope::PlatformScope(const Platform& platform) {
  if (current.exchange(new Platform(platform))) abortWith("A platform is in scope already.");
}

PlatformScope::~PlatformScope() {
  for (auto& close : std::exchange(closers, {})) close();
  delete current.exchange(nullptr);
}

void PlatformScope::atClose(std::function<void()> action) {
  closers.push_back(std::move(action));
}

}  // namespace hushbox
