// Hushbox on the Mac: brings the platform into scope and runs the application on it.

#import <AppKit/AppKit.h>

#include <cstdio>

#include "app/HushboxApp.h"
#include "platform/macos/MacPlatform.h"
#import "platform/macos/SingleInstance.h"

namespace hushbox {
namespace {

/// Makes the shared application an agent: no Dock icon and no menu of its own.
void becomeAgent() {
  @autoreleasepool {
    [NSApplication.sharedApplication setActivationPolicy:NSApplicationActivationPolicyAccessory];
  }
}

int run() {
  becomeAgent();
  if (!SingleInstance::isFirst()) {
    std::fprintf(stderr, "Hushbox is running in this session already.\n");
    return 0;
  }
  // The application exits the process itself, and another thread may still read the battery then:
  // these objects are alive until the process ends.
  const MacPlatform platform;
  return HushboxApp::main();
}

}  // namespace
}  // namespace hushbox

int main() {
  return hushbox::run();
}
