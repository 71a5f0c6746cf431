#pragma once

#include "platform/UnifiedLog.h"

namespace hushbox {

/// The system's log (os_log), where Console and `log` find the records by subsystem and category.
/// Any thread; never blocks.
///
/// The text is marked public: records are written to be read by whoever helps the user. Control
/// characters are spelt out, so that a record is one line wherever it is shown. The system itself
/// cuts a record short beyond about a kilobyte.
class OSUnifiedLog final : public UnifiedLog {
 public:
  void write(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view text) override;
};

}  // namespace hushbox
