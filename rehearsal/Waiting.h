#pragma once

#include <chrono>
#include <functional>
#include <string_view>

namespace hushbox::rehearsal {

using Milliseconds = std::chrono::milliseconds;

/// How long a real server may take before the desk gives up: generous, since a loaded machine with
/// two cores starts a browser in seconds where an idle one takes 300 ms.
inline constexpr Milliseconds patience{30'000};

/// Waits until the predicate holds, and lets the GLib main context make progress meanwhile.
///
/// On the thread that owns or can acquire the default main context, every source of that context
/// is dispatched, so that adapters under test keep working; elsewhere it only looks again and
/// again. The predicate is looked at after every dispatch, at least each 2 ms, and once more at
/// the end. Throws DeskError, naming what was awaited, when the deadline passes first.
void waitUntil(const std::function<bool()>& predicate, Milliseconds deadline,
               std::string_view awaited);

/// The same without the exception: false when the deadline passes first.
bool holdsWithin(const std::function<bool()>& predicate, Milliseconds deadline);

/// Lets the main context make progress for a span of time; for showing that something does *not*
/// happen.
void letPass(Milliseconds span);

/// Makes a waitUntil() in progress look at its predicate at once; callable on any thread.
void wakeWaiters();

}  // namespace hushbox::rehearsal
