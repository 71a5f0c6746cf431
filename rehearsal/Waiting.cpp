#include "rehearsal/Waiting.h"

#include <glib.h>

#include <string>
#include <thread>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned pollMilliseconds = 2;

/// Acquires the default main context, if possible, and wakes it every 2 ms until destroyed.
class ContextIteration {
 public:
  ContextIteration() : owned_(g_main_context_acquire(nullptr)) {
    if (!owned_) return;
    tick_ = g_timeout_source_new(pollMilliseconds);
    g_source_set_callback(
        tick_, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
    g_source_attach(tick_, nullptr);
  }
  ~ContextIteration() {
    if (!owned_) return;
    g_source_destroy(tick_);
    g_source_unref(tick_);
    g_main_context_release(nullptr);
  }
  ContextIteration(const ContextIteration&) = delete;
  ContextIteration& operator=(const ContextIteration&) = delete;

  /// Iterates the context once; on a thread that does not own the context, sleeps for 2 ms.
  void run() const {
    if (owned_) {
      g_main_context_iteration(nullptr, TRUE);
    } else {
      std::this_thread::sleep_for(Milliseconds{pollMilliseconds});
    }
  }

 private:
  bool owned_;
  GSource* tick_ = nullptr;
};

}  // namespace

bool holdsWithin(const std::function<bool()>& predicate, Milliseconds deadline) {
  const auto end = Clock::now() + deadline;
  if (predicate()) return true;
  const ContextIteration iteration;
  while (Clock::now() < end) {
    iteration.run();
    if (predicate()) return true;
  }
  return predicate();
}

void waitUntil(const std::function<bool()>& predicate, Milliseconds deadline,
               std::string_view awaited) {
  if (holdsWithin(predicate, deadline)) return;
  throw DeskError("timed out after " + std::to_string(deadline.count()) + " ms waiting for " +
                  std::string(awaited));
}

void letPass(Milliseconds span) {
  holdsWithin([] { return false; }, span);
}

void wakeWaiters() {
  g_main_context_wakeup(nullptr);
}

}  // namespace hushbox::rehearsal
