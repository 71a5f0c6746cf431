#pragma once

#include "platform/linux/report/ReportLines.h"

namespace hushbox {

/// Accessibility, the running browsers and the pages of Teams: whether accessibility is on, which
/// browsers are on its bus, and for each page of Teams the label of its microphone button. Titles
/// and addresses are left out. Starts nothing, and presses nothing.
ReportLines teamsReport();

}  // namespace hushbox
