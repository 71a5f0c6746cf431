#pragma once

#include <glib.h>

#include <algorithm>
#include <functional>

namespace hushbox::baselines {

/// Runs the default main context for `seconds`, calls `poll` once a second, and returns the longest
/// time in milliseconds between two turns of a source that is due every 5 ms.
inline double longestGap(int seconds, std::function<void()> poll) {
  struct State {
    std::function<void()> poll;
    gint64 lastTurn = g_get_monotonic_time();
    gint64 longest = 0;
  } state{std::move(poll)};
  const guint ticks = g_timeout_add(
      5,
      [](gpointer data) -> gboolean {
        auto* const state = static_cast<State*>(data);
        const gint64 now = g_get_monotonic_time();
        state->longest = std::max(state->longest, now - state->lastTurn);
        state->lastTurn = now;
        return G_SOURCE_CONTINUE;
      },
      &state);
  const guint polls = g_timeout_add(
      1000,
      [](gpointer data) -> gboolean {
        static_cast<State*>(data)->poll();
        return G_SOURCE_CONTINUE;
      },
      &state);
  const gint64 end = g_get_monotonic_time() + G_USEC_PER_SEC * gint64{seconds};
  while (g_get_monotonic_time() < end) g_main_context_iteration(nullptr, TRUE);
  // A poll that ended last has held up a turn that has not come yet.
  state.longest = std::max(state.longest, g_get_monotonic_time() - state.lastTurn);
  g_source_remove(ticks);
  g_source_remove(polls);
  return static_cast<double>(state.longest) / 1000;
}

}  // namespace hushbox::baselines
