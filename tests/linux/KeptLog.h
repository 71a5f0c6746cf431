#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/UnifiedLog.h"

namespace hushbox {

/// Keeps the texts of what was logged. Main thread only.
class KeptLog final : public UnifiedLog {
 public:
  void write(std::string_view, std::string_view, LogLevel, std::string_view text) override {
    lines.emplace_back(text);
  }
  std::vector<std::string> lines;
};

}  // namespace hushbox
