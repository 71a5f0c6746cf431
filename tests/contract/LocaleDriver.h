#pragma once

#include <string>

#include "platform/Locale.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a locale.
class LocaleDriver : public ContractDriver {
 public:
  virtual Locale& locale() = 0;

  /// Returns the current time in the locale's style, from a source independent of the locale.
  virtual std::string expectedTime() = 0;
};

}  // namespace hushbox
