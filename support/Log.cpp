#include "support/Log.h"

#include "platform/Platform.h"
#include "support/BundleIdentifier.h"

namespace hushbox {

void Log::write(LogLevel level, const RenderedLog& text) const {
  platform().log.write(bundleIdentifier, category_, level, text.text());
}

}  // namespace hushbox
