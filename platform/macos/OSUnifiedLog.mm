#import "platform/macos/OSUnifiedLog.h"

#import <os/log.h>

#include <string>

#include "support/Text.h"

namespace hushbox {

void OSUnifiedLog::write(std::string_view subsystem, std::string_view category, LogLevel level,
                         std::string_view text) {
  // The system keeps one log per subsystem and category and returns it again.
  os_log_t log = os_log_create(std::string(subsystem).c_str(), std::string(category).c_str());
  const std::string printable = text::escapedForTerminal(text);
  os_log_with_type(log, level == LogLevel::error ? OS_LOG_TYPE_ERROR : OS_LOG_TYPE_INFO,
                   "%{public}s", printable.c_str());
}

}  // namespace hushbox
