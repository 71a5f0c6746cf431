#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/UnifiedLog.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/LogRecord.h"

namespace hushbox {

/// A log in memory. Journal lines: "jabra info: Attached to …".
class SimulatedUnifiedLog final : public UnifiedLog {
 public:
  explicit SimulatedUnifiedLog(Journal& journal) : journal_(journal) {}

  const std::vector<LogRecord>& records() const { return records_; }
  /// Returns the records and removes them.
  std::vector<LogRecord> takeRecords() { return std::exchange(records_, {}); }
  /// Returns the texts of one category's records, in order.
  Lines texts(std::string_view category) const;

  void write(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view text) override;

 private:
  Journal& journal_;
  std::vector<LogRecord> records_;
};

}  // namespace hushbox
