#pragma once

#include <filesystem>
#include <utility>

#include "platform/Platform.h"
#include "platform/linux/accessibility/AtspiAccessibilityTree.h"
#include "platform/linux/audio/PulseAudioHardware.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "platform/linux/locale/SessionLocale.h"
#include "platform/linux/mainloop/GLibMainLoop.h"
#include "platform/linux/menubar/StatusNotifierMenuBar.h"
#include "platform/linux/processes/SpawnedChildProcessFactory.h"
#include "platform/linux/session/AutostartLoginItem.h"
#include "platform/linux/session/DesktopNotifications.h"

namespace hushbox {

/// All Linux adapters, and the platform in scope for as long as this lives. Main thread only.
struct LinuxPlatform {
  /// `bus` and `log` must outlive this. `iconFolder` is the folder of icon themes with the item's
  /// icons.
  LinuxPlatform(SessionBusConnection& bus, UnifiedLog& log, ChildProcessRules rules = {},
                const std::filesystem::path& iconFolder = {})
      : accessibility([this] { notifications.add(browserRestartNotice(), nullptr); },
                      [this] { return audio.recordingProcesses(); }),
        childProcesses(std::move(rules)),
        notifications(mainLoop, bus),
        menuBar(bus, log, StatusNotifierMenuBar::panelTimeout, iconFolder),
        locale(bus),
        scope({mainLoop, audio, accessibility, accessibility.workspace(), childProcesses,
               notifications, loginItem, menuBar, log, locale}) {
    // A timer must not overtake a volume that changed before it was due.
    mainLoop.setBeforeTimer([this](Instant due) { audio.deliverUntil(due); });
  }

  /// Kills the child processes and waits for the work on other threads, which uses the platform.
  ~LinuxPlatform() {
    childProcesses.endAll();
    mainLoop.finishUtilityWork();
  }

  LinuxPlatform(const LinuxPlatform&) = delete;
  LinuxPlatform& operator=(const LinuxPlatform&) = delete;

  /// Shown when accessibility has been switched on: browsers read that switch only at their start.
  static NotificationRequest browserRestartNotice() {
    return {.identifier = "accessibility-switched-on",
            .title = "Accessibility is switched on",
            .body =
                "Close all windows of your browser and start it again, so that Hushbox can find "
                "Teams in it."};
  }

  GLibMainLoop mainLoop;
  PulseAudioHardware audio;
  AtspiAccessibilityTree accessibility;
  SpawnedChildProcessFactory childProcesses;
  DesktopNotifications notifications;
  AutostartLoginItem loginItem{AutostartLoginItem::sessionFolder(),
                               AutostartLoginItem::runningProgram()};
  StatusNotifierMenuBar menuBar;
  SessionLocale locale;
  PlatformScope scope;
};

}  // namespace hushbox
