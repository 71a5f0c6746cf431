#pragma once

#include <string>

#include "platform/linux/report/ReportLines.h"

namespace hushbox {

/// The desktop and its session, a line each: the kind of session, the session bus, whether Hushbox
/// runs, the host of status items, the notification daemon, the journal, and the login entry.
/// `program` is the full path of the hushbox that belongs to this report. Waits for each program at
/// most 2 s.
ReportLines desktopReport(const std::string& program);

/// The batteries that UPower knows, as `powerReport` prints them. Only the names of speakerphones
/// are shown.
ReportLines batteryReport(const std::string& powerReport);

}  // namespace hushbox
