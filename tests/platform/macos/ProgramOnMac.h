#pragma once

#include <string>
#include <vector>

#include "app/HushboxApp.h"
#include "platform/macos/MacPlatform.h"
#include "tests/platform/macos/MacFixture.h"

namespace hushbox {

/// The whole program on the doubles: the platform and the application.
struct ProgramOnMac : MacPlatform {
  HushboxApp app;
};

/// Makes the power-management tool report this level for the speakerphone.
void setBattery(int level, const std::string& state = "discharging");

/// Returns the titles of the menu's rows, with "---" for a separator.
std::vector<std::string> rowTitles();

}  // namespace hushbox
