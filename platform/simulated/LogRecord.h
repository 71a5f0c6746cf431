#pragma once

#include <string>

#include "platform/UnifiedLog.h"

namespace hushbox {

/// One log record, as it was written.
struct LogRecord {
  std::string subsystem;
  std::string category;
  LogLevel level = LogLevel::info;
  std::string text;

  friend bool operator==(const LogRecord&, const LogRecord&) = default;
};

}  // namespace hushbox
