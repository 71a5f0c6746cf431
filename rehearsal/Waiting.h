#pragma once

#include <chrono>
#include <functional>
#include <string_view>

namespace hushbox::rehearsal {

using Milliseconds = std::chrono::milliseconds;

/// How long the desk waits for a real server before it gives up. It is generous: an idle machine
/// starts a browser in 300 ms, but a loaded one with two cores takes seconds.
inline constexpr Milliseconds serverTimeout{30'000};

/// Waits until the predicate is true and runs the GLib main context meanwhile.
///
/// On the thread that owns or can acquire the default main context, this dispatches every source of
/// that context, so that adapters under test keep working. On other threads it only polls. It
/// evaluates the predicate after every dispatch, at least every 2 ms, and once more at the
/// deadline. Throws DeskError at the deadline; the message names `awaited`.
void waitUntil(const std::function<bool()>& predicate, Milliseconds deadline,
               std::string_view awaited);

/// Like waitUntil(), but returns whether the predicate became true instead of throwing.
bool holdsWithin(const std::function<bool()>& predicate, Milliseconds deadline);

/// Runs the main context for that long. Use it to show that something does *not* happen.
void letPass(Milliseconds span);

/// Makes every waitUntil() in progress evaluate its predicate now. Callable on any thread.
void wakeWaiters();

}  // namespace hushbox::rehearsal
