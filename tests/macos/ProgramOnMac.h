#pragma once

#include <string>
#include <vector>

#include "app/HushboxApp.h"
#include "platform/Platform.h"
#include "platform/macos/AXAccessibilityTree.h"
#include "platform/macos/CoreAudioHardware.h"
#include "platform/macos/FormatterLocale.h"
#include "platform/macos/NSWorkspaceApplications.h"
#include "platform/macos/OSUnifiedLog.h"
#include "platform/macos/RunLoopMainLoop.h"
#include "platform/macos/ServiceLoginItem.h"
#include "platform/macos/StatusItemMenuBar.h"
#include "platform/macos/TaskChildProcesses.h"
#include "platform/macos/UserNotificationCenter.h"
#include "tests/macos/MacTest.h"

namespace hushbox {

/// The whole program on the doubles: every adapter, in scope as the platform, and the application.
struct ProgramOnMac {
  RunLoopMainLoop mainLoop;
  OSUnifiedLog log;
  CoreAudioHardware audio;
  AXAccessibilityTree accessibility;
  NSWorkspaceApplications workspace;
  TaskChildProcesses childProcesses;
  UserNotificationCenter notifications;
  ServiceLoginItem loginItem;
  StatusItemMenuBar menuBar;
  FormatterLocale locale;
  PlatformScope scope{{mainLoop, audio, accessibility, workspace, childProcesses, notifications,
                       loginItem, menuBar, log, locale}};
  HushboxApp app;
};

/// The power-management tool reports the speakerphone at that level.
void setBattery(int level, const std::string& state = "discharging");

/// The titles of the menu's rows, "---" for a separator.
std::vector<std::string> rowTitles();

}  // namespace hushbox
