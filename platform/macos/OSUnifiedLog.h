#pragma once

#include "platform/UnifiedLog.h"

namespace hushbox {

/// Writes to the system's log (os_log). Console and `log` find the records by subsystem and
/// category. Any thread; never blocks.
///
/// The text is marked public, because users attach these records to bug reports. Control characters
/// are escaped, so that each record is one line. The system truncates a record at about 1 KB.
class OSUnifiedLog final : public UnifiedLog {
 public:
  void write(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view text) override;
};

}  // namespace hushbox
