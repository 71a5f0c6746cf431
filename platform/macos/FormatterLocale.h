#pragma once

#include "platform/Locale.h"

namespace hushbox {

/// Formats the time with the system's date formatter, which follows the current System Settings.
/// Main thread only.
class FormatterLocale final : public Locale {
 public:
  std::string shortTime() override;
};

}  // namespace hushbox
