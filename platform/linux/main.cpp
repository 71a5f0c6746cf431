// Hushbox on the Linux desktop: sets up the platform and runs the application on it.

#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "app/HushboxApp.h"
#include "platform/linux/LinuxPlatform.h"
#include "platform/linux/PartOfProgram.h"
#include "platform/linux/session/DisplayWatch.h"
#include "platform/linux/session/JournalLog.h"
#include "platform/linux/session/SingleInstance.h"

namespace hushbox {
namespace {

/// The program that prints the power report on Linux.
std::string powerReport() {
  return partOfProgram(HUSHBOX_LIBEXEC_FROM_BIN "/hushbox-power-report",
                       "power-report/hushbox-power-report");
}

/// The folder of icon themes with the item's icons.
std::filesystem::path iconFolder() {
  return partOfProgram(HUSHBOX_ICONS_FROM_BIN, HUSHBOX_BUILT_ICONS);
}

constexpr const char* runningAlready = "Hushbox is running in this session already.\n";

int run() {
  SessionBusConnection bus;
  SingleInstance instance(bus);
  if (!instance.isFirst()) {
    std::fputs(runningAlready, stderr);
    return 0;
  }
  JournalLog log;
  LinuxPlatform platform(bus, log, {.standIns = {{"/usr/bin/pmset", powerReport()}}}, iconFolder());
  // Return the memory that only the start needed to the system.
  platform.mainLoop.mainAsyncAfter(std::chrono::seconds(10), WorkItem([] { malloc_trim(0); }));
  instance.keep([&] {
    std::fputs(runningAlready, stderr);
    platform.mainLoop.terminate();
  });
  const DisplayWatch display([&] { platform.mainLoop.terminate(); });
  return HushboxApp::main();
}

/// Starts the program again in this process, without the allocator's cache per thread, which is
/// read from the environment at the start only. The caches fill up over hours, with a few blocks of
/// each size, and pin the pages around them: without them the program has 300 KiB less, and its
/// memory stays within 20 KiB in an hour instead of 160. Returns if settings are in the environment
/// already, or if the start fails.
void restartWithoutThreadCaches(char** arguments) {
  constexpr const char* settings = "GLIBC_TUNABLES";
  if (std::getenv(settings) != nullptr) return;
  std::error_code error;
  // By its real name: the kernel names the process after the path.
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return;
  setenv(settings, "glibc.malloc.tcache_count=0", 0);
  execv(program.c_str(), arguments);
}

}  // namespace
}  // namespace hushbox

int main(int, char** arguments) {
  hushbox::restartWithoutThreadCaches(arguments);
  // One memory arena for all threads: an arena per thread is never returned, and rarely used.
  mallopt(M_ARENA_MAX, 1);
  return hushbox::run();
}
