#pragma once

#include "platform/Platform.h"
#include "platform/macos/AXAccessibilityTree.h"
#include "platform/macos/CoreAudioHardware.h"
#include "platform/macos/FormatterLocale.h"
#include "platform/macos/NSWorkspaceApplications.h"
#include "platform/macos/OSUnifiedLog.h"
#include "platform/macos/RunLoopMainLoop.h"
#include "platform/macos/ServiceLoginItem.h"
#include "platform/macos/StatusItemMenuBar.h"
#include "platform/macos/TaskChildProcessFactory.h"
#include "platform/macos/UserNotificationCenter.h"

namespace hushbox {

/// Every adapter of the Mac, in scope as the platform for as long as this lives. Main thread only;
/// create it after the shared application.
struct MacPlatform {
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
  PlatformScope scope{{mainLoop, audio, accessibility, workspace, childProcesses, notifications,
                       loginItem, menuBar, log, locale}};
};

}  // namespace hushbox
