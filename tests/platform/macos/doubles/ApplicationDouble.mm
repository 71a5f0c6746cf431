#include "tests/platform/macos/doubles/ApplicationDouble.h"

#import <AppKit/AppKit.h>

#include <chrono>

#include "tests/platform/macos/doubles/RunLoopDouble.h"
#include "tests/platform/macos/runtime/Failure.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

namespace hushbox::doubles {
namespace {

/// If the application has not terminated by then, it never will.
constexpr std::chrono::hours maxRun(48);

bool terminated = false;
bool agent = false;

}  // namespace

bool isTerminated() {
  return terminated;
}

bool isAgent() {
  return agent;
}

void resetApplication() {
  terminated = agent = false;
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

@implementation NSApplication
+ (NSApplication*)sharedApplication {
  requireMainThread("+[NSApplication sharedApplication]");
  static NSApplication* only = [] {
    NSApplication* made = [[NSApplication alloc] init];
    keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
  requireMainThread("-[NSApplication setActivationPolicy:]");
  agent = policy == NSApplicationActivationPolicyAccessory;
  return YES;
}
/// Returns after terminate:, so that the test continues. On a Mac the process exits.
- (void)run {
  requireMainThread("-[NSApplication run]");
  const hushbox::Instant end = now() + maxRun;
  while (!terminated) {
    @autoreleasepool {
      if (!runOne(end)) fail("nothing is left that could terminate the application");
    }
  }
}
- (void)terminate:(id)sender {
  (void)sender;
  requireMainThread("-[NSApplication terminate:]");
  terminated = true;
}
@end
