#pragma once

#include <string>

#include "platform/Locale.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a locale and the clock that it shows.
class LocaleDriver : public ContractDriver {
 public:
  virtual Locale& locale() = 0;

  /// The present time in the locale's style, from a source of its own.
  virtual std::string expectedTime() = 0;
};

}  // namespace hushbox
