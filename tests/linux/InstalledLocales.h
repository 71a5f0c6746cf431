#pragma once

#include <string>

#include "rehearsal/ScratchFolder.h"
#include "tests/linux/ScopedEnvironment.h"

namespace hushbox {

/// Locales compiled for the tests, for a machine that has none installed, with LOCPATH leading to
/// them and no locale chosen.
class InstalledLocales {
 public:
  InstalledLocales();

  /// Compiles a locale, such as "de_DE" in "UTF-8"; false where the sources of the locales are not
  /// installed.
  bool install(const std::string& language, const std::string& codeset);

 private:
  rehearsal::ScratchFolder scratch_;
  ScopedEnvironment environment_;
};

}  // namespace hushbox
