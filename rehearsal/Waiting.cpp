#include "rehearsal/Waiting.h"

#include <glib.h>

#include <string>
#include <thread>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned lookAgainMilliseconds = 2;

/// Keeps the default main context acquired, and waking every 2 ms, for as long as it lives.
class ContextTurns {
 public:
  ContextTurns() : owned_(g_main_context_acquire(nullptr)) {
    if (!owned_) return;
    tick_ = g_timeout_source_new(lookAgainMilliseconds);
    g_source_set_callback(
        tick_, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
    g_source_attach(tick_, nullptr);
  }
  ~ContextTurns() {
    if (!owned_) return;
    g_source_destroy(tick_);
    g_source_unref(tick_);
    g_main_context_release(nullptr);
  }
  ContextTurns(const ContextTurns&) = delete;
  ContextTurns& operator=(const ContextTurns&) = delete;

  void take() const {
    if (owned_) {
      g_main_context_iteration(nullptr, TRUE);
    } else {
      std::this_thread::sleep_for(Milliseconds{lookAgainMilliseconds});
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
  const ContextTurns turns;
  while (Clock::now() < end) {
    turns.take();
    if (predicate()) return true;
  }
  return predicate();
}

void waitUntil(const std::function<bool()>& predicate, Milliseconds deadline,
               std::string_view awaited) {
  if (holdsWithin(predicate, deadline)) return;
  throw DeskError("waited " + std::to_string(deadline.count()) + " ms in vain for " +
                  std::string(awaited));
}

void letPass(Milliseconds span) {
  holdsWithin([] { return false; }, span);
}

void wakeWaiters() {
  g_main_context_wakeup(nullptr);
}

}  // namespace hushbox::rehearsal
