// Hushbox on the Mac: puts the platform together and runs the application on it.

#import <AppKit/AppKit.h>

#include "app/HushboxApp.h"
#include "platform/Platform.h"
#import "platform/macos/AXAccessibilityTree.h"
#import "platform/macos/CoreAudioHardware.h"
#import "platform/macos/FormatterLocale.h"
#import "platform/macos/NSWorkspaceApplications.h"
#import "platform/macos/OSUnifiedLog.h"
#import "platform/macos/RunLoopMainLoop.h"
#import "platform/macos/ServiceLoginItem.h"
#import "platform/macos/StatusItemMenuBar.h"
#import "platform/macos/TaskChildProcessFactory.h"
#import "platform/macos/UserNotificationCenter.h"

namespace hushbox {
namespace {

/// The shared application as an agent: no Dock icon, no menu of its own. There is one of it in a
/// session, which Launch Services see to.
void becomeAgent() {
  @autoreleasepool {
    [NSApplication.sharedApplication setActivationPolicy:NSApplicationActivationPolicyAccessory];
  }
}

int run() {
  becomeAgent();
  RunLoopMainLoop mainLoop;
  OSUnifiedLog log;
  CoreAudioHardware audio;
  AXAccessibilityTree accessibility;
  NSWorkspaceApplications workspace;
  TaskChildProcessFactory childProcesses;
  UserNotificationCenter notifications;
  ServiceLoginItem loginItem;
  StatusItemMenuBar menuBar;
  FormatterLocale locale;
  const PlatformScope scope({mainLoop, audio, accessibility, workspace, childProcesses,
                             notifications, loginItem, menuBar, log, locale});
  // The application ends the process by itself, with a battery reading perhaps still under way on
  // another thread: what is here stays alive for it.
  return HushboxApp::main();
}

}  // namespace
}  // namespace hushbox

int main() {
  return hushbox::run();
}
