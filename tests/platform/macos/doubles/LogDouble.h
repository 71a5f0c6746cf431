#pragma once

#include <string>
#include <vector>

namespace hushbox::doubles {

/// A record as `log show` prints it: text that is not marked public is "<private>".
struct UnifiedLogRecord {
  std::string subsystem;
  std::string category;
  /// 0 default, 1 info, 2 debug, 0x10 error, 0x11 fault.
  unsigned type = 0;
  std::string text;
};

/// Returns all records, oldest first. Any thread.
std::vector<UnifiedLogRecord> logRecords();

void resetLog();

}  // namespace hushbox::doubles
