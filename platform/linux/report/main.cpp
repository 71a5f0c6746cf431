// hushbox-report: says what Hushbox finds on this desktop, for bug reports. Changes nothing, and
// prints nothing private.

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>

#include "platform/linux/PartOfProgram.h"
#include "platform/linux/report/DesktopReport.h"
#include "platform/linux/report/SoundReport.h"
#include "platform/linux/report/TeamsReport.h"

namespace hushbox {
namespace {

/// For the whole report. Each part has bounds of its own, well below this.
constexpr unsigned timeoutSeconds = 30;

void print(const ReportLines& lines) {
  for (const std::string& line : lines) std::printf("%s\n", line.c_str());
  // Whatever hangs later, this much is there.
  std::fflush(stdout);
}

void report() {
  const std::string program = partOfProgram("hushbox", "../hushbox");
  print({std::string("Hushbox " HUSHBOX_VERSION ", ") + HUSHBOX_BUILD + " build, compiler " +
             __VERSION__,
         "Program: " + withoutHome(program)});
  print(desktopReport(program));
  print(soundReport());
  print(teamsReport());
  print(batteryReport(partOfProgram(HUSHBOX_LIBEXEC_FROM_BIN "/hushbox-power-report",
                                    "../power-report/hushbox-power-report")));
}

}  // namespace
}  // namespace hushbox

int main(int count, char** arguments) {
  if (count > 1) {
    std::fprintf(
        stderr,
        "%s: says what Hushbox finds on this desktop, for bug reports. It has no options.\n",
        arguments[0]);
    return 2;
  }
  std::signal(SIGALRM, [](int) {
    constexpr char late[] = "Report: something does not reply, so the rest is missing\n";
    const auto written = write(STDOUT_FILENO, late, sizeof late - 1);
    _exit(written < 0 ? 2 : 1);
  });
  alarm(hushbox::timeoutSeconds);
  hushbox::report();
  return 0;
}
