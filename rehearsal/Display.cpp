#include "rehearsal/Display.h"

#include "rehearsal/DeskError.h"
#include "rehearsal/LinePipe.h"

namespace hushbox::rehearsal {

namespace {

constexpr int numberDescriptor = 3;

}  // namespace

Display::Display(const Environment& environment, const std::filesystem::path& logFolder)
    : environment_(environment), logFolder_(logFolder) {
  LinePipe number;
  server_ = std::make_unique<ServerProcess>(
      ServerProcess::Launch{{"Xvfb", "-displayfd", std::to_string(numberDescriptor), "-screen", "0",
                             "1280x800x24", "-nolisten", "tcp", "-noreset"},
                            environment_,
                            logFolder_ / "xvfb.log",
                            {{number.writeEnd(), numberDescriptor}}});
  server_->waitUntilReady([&] { return number.hasLine(); }, "an X display");
  name_ = ":" + number.line();
  environment_["DISPLAY"] = name_;
  startWindowManager();
}

void Display::startWindowManager() {
  const std::filesystem::path started = logFolder_ / "openbox-started";
  windowManager_ = std::make_unique<ServerProcess>(
      ServerProcess::Launch{{"openbox", "--sm-disable", "--startup", "touch " + started.string()},
                            environment_,
                            logFolder_ / "openbox.log",
                            {}});
  windowManager_->waitUntilReady([&] { return std::filesystem::exists(started); },
                                 "a window manager");
}

void Display::screenshot(const std::filesystem::path& file) const {
  const ServerProcess tool(
      {{"import", "-window", "root", file.string()}, environment_, logFolder_ / "import.log", {}});
  const bool done = holdsWithin([&] { return !tool.isRunning(); }, serverTimeout);
  if (!done || !std::filesystem::exists(file)) {
    throw DeskError("cannot write the screenshot " + file.string());
  }
}

}  // namespace hushbox::rehearsal
