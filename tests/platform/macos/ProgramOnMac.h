#pragma once

#include <string>
#include <vector>

#include "app/HushboxApp.h"
#include "tests/platform/macos/MacAdapters.h"
#include "tests/platform/macos/MacFixture.h"

namespace hushbox {

/// The whole program on the doubles: every adapter, in scope as the platform, and the application.
struct ProgramOnMac : MacAdapters {
  HushboxApp app;
};

/// The power-management tool reports the speakerphone at that level.
void setBattery(int level, const std::string& state = "discharging");

/// The titles of the menu's rows, "---" for a separator.
std::vector<std::string> rowTitles();

}  // namespace hushbox
