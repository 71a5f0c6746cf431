#pragma once

#include <string_view>

namespace hushbox {

/// The log levels that the program uses.
enum class LogLevel { info, error };

/// The system-wide log. Any thread.
class UnifiedLog {
 public:
  virtual ~UnifiedLog() = default;

  /// Writes one record. `text` is UTF-8 and may contain any character, including control
  /// characters; the adapter makes it safe to print and may cut it to the log's maximum size. A
  /// record that cannot be written is dropped.
  virtual void write(std::string_view subsystem, std::string_view category, LogLevel level,
                     std::string_view text) = 0;
};

}  // namespace hushbox
