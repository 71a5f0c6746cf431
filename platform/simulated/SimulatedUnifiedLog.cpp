#include "platform/simulated/SimulatedUnifiedLog.h"

namespace hushbox {

Lines SimulatedUnifiedLog::texts(std::string_view category) const {
  Lines texts;
  for (const LogRecord& record : records_) {
    if (record.category == category) texts.push_back(record.text);
  }
  return texts;
}

void SimulatedUnifiedLog::write(std::string_view subsystem, std::string_view category,
                                LogLevel level, std::string_view text) {
  journal_.add("log", category, level == LogLevel::error ? " error: " : " info: ", text);
  records_.push_back({std::string(subsystem), std::string(category), level, std::string(text)});
}

}  // namespace hushbox
