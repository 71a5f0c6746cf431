#import "platform/macos/NSWorkspaceApplications.h"

#import <AppKit/AppKit.h>

#import "platform/macos/StringConversion.h"

namespace hushbox {

std::vector<RunningApplication> NSWorkspaceApplications::runningApplications() {
  std::vector<RunningApplication> applications;
  @autoreleasepool {
    for (NSRunningApplication* running in NSWorkspace.sharedWorkspace.runningApplications) {
      RunningApplication& application = applications.emplace_back();
      NSString* identifier = running.bundleIdentifier;
      if (identifier) application.bundleIdentifier = utf8FromString(identifier);
      application.processIdentifier = running.processIdentifier;
    }
  }
  return applications;
}

}  // namespace hushbox
