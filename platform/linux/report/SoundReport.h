#pragma once

#include "platform/linux/report/ReportLines.h"

namespace hushbox {

/// The sound server and its inputs: a line for the server, then one per input with its volume, its
/// mute switch, whether it is the default and whether something records from it. Only the names of
/// inputs that Hushbox may follow are shown. Waits for the server at most 2 s.
ReportLines soundReport();

}  // namespace hushbox
