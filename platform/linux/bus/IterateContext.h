#pragma once

#include <glib.h>

#include <chrono>
#include <functional>

namespace hushbox {

/// The moment so long from now, on GLib's monotonic clock, in microseconds.
inline gint64 momentAfter(std::chrono::milliseconds delay) {
  return g_get_monotonic_time() + std::chrono::microseconds(delay).count();
}

/// Iterates a main context, null for the default one, until `done()` holds or until the moment that
/// `deadline()` returns, which may change meanwhile. Returns whether `done()` holds.
bool iterateContext(GMainContext* context, const std::function<bool()>& done,
                    const std::function<gint64()>& deadline);

}  // namespace hushbox
