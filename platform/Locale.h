#pragma once

#include <string>

namespace hushbox {

/// The user's conventions for showing the time of day. Main thread only.
class Locale {
 public:
  virtual ~Locale() = default;

  /// Returns the current time of day in the locale's short style, without the date, as UTF-8:
  /// "10:42", "10:42 AM".
  virtual std::string shortTime() = 0;
};

}  // namespace hushbox
