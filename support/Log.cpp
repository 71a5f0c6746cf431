#include "support/Log.h"

#include "platform/Platform.h"
#include "support/BundleIdentifier.h"

namespace hushbox {

void Log::write(LogLevel level, std::string_view text) const {
  platform().log.write(bundleIdentifier, category_, level, text);
}

}  // namespace hushbox
