#pragma once

#include "platform/Locale.h"

namespace hushbox {

/// The user's conventions as the system's date formatter follows them, with what is set in System
/// Settings at the time of asking. Main thread only.
class FormatterLocale final : public Locale {
 public:
  std::string shortTime() override;
};

}  // namespace hushbox
