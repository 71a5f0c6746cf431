// Hushbox on the Linux desktop: puts the platform together and runs the application on it.

#include <malloc.h>

#include <chrono>
#include <cstdio>
#include <filesystem>

#include "app/HushboxApp.h"
#include "platform/Platform.h"
#include "platform/linux/accessibility/AtspiAccessibilityTree.h"
#include "platform/linux/audio/PulseAudioHardware.h"
#include "platform/linux/locale/SessionLocale.h"
#include "platform/linux/mainloop/GLibMainLoop.h"
#include "platform/linux/menubar/StatusNotifierMenuBar.h"
#include "platform/linux/processes/SpawnedChildProcessFactory.h"
#include "platform/linux/session/AutostartLoginItem.h"
#include "platform/linux/session/DesktopNotifications.h"
#include "platform/linux/session/JournalLog.h"
#include "platform/linux/session/SingleInstance.h"

namespace hushbox {
namespace {

/// The program that prints the power report on Linux. It is found relative to this executable, so
/// that an installation works wherever it is moved: first as installed, then as it lies in the
/// build folder.
std::string powerReport() {
  std::error_code error;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  const auto installed = folder / HUSHBOX_LIBEXEC_FROM_BIN / "hushbox-power-report";
  if (std::filesystem::exists(installed, error)) return installed.lexically_normal();
  return folder / "power-report" / "hushbox-power-report";
}

int run() {
  const SingleInstance instance;
  if (!instance.isFirst()) {
    std::fprintf(stderr, "Hushbox is running in this session already.\n");
    return 0;
  }
  GLibMainLoop mainLoop;
  JournalLog log;
  PulseAudioHardware audio;
  AtspiAccessibilityTree accessibility;
  SpawnedChildProcessFactory childProcesses({.standIns = {{"/usr/bin/pmset", powerReport()}}});
  DesktopNotifications notifications(mainLoop);
  AutostartLoginItem loginItem(AutostartLoginItem::sessionFolder(),
                               AutostartLoginItem::runningProgram());
  StatusNotifierMenuBar menuBar(log);
  SessionLocale locale;
  const PlatformScope scope({mainLoop, audio, accessibility, accessibility.workspace(),
                             childProcesses, notifications, loginItem, menuBar, log, locale});
  // What only the start needed goes back to the system once it is over.
  mainLoop.mainAsyncAfter(std::chrono::seconds(10), WorkItem([] { malloc_trim(0); }));
  const int status = HushboxApp::main();
  // A battery reading may be under way on another thread, which still needs the platform.
  childProcesses.endAll();
  mainLoop.finishUtilityWork();
  return status;
}

}  // namespace
}  // namespace hushbox

int main() {
  // A pool of memory for each of the few threads would be held for ever and used seldom.
  mallopt(M_ARENA_MAX, 1);
  return hushbox::run();
}
