#import "platform/macos/SingleInstance.h"

#import <AppKit/AppKit.h>

#include <unistd.h>

namespace hushbox {

bool SingleInstance::isFirst() {
  @autoreleasepool {
    NSString* identifier = NSBundle.mainBundle.bundleIdentifier;
    if (!identifier) return true;
    const pid_t own = getpid();
    for (NSRunningApplication* each in
         [NSRunningApplication runningApplicationsWithBundleIdentifier:identifier]) {
      const pid_t other = each.processIdentifier;
      if (other == own || each.terminated) continue;
      if (each.finishedLaunching || other < own) return false;
    }
    return true;
  }
}

}  // namespace hushbox
