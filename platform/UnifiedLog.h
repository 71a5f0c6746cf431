#pragma once

#include <string_view>

namespace hushbox {

/// The levels of the unified log that the program uses.
enum class LogLevel { info, error };

/// The platform's log of all programs. Any thread.
class UnifiedLog {
 public:
  virtual ~UnifiedLog() = default;

  /// Adds one record. `text` is valid UTF-8 and may hold anything, control characters included;
  /// making it fit to print is the adapter's part. A record that cannot be written is dropped.
  virtual void write(std::string_view subsystem, std::string_view category, LogLevel level,
                     std::string_view text) = 0;
};

}  // namespace hushbox
