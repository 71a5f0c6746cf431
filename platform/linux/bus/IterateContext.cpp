#include "platform/linux/bus/IterateContext.h"

namespace hushbox {

bool iterateContext(GMainContext* context, const std::function<bool()>& done,
                    const std::function<gint64()>& deadline) {
  GSource* const alarm = g_timeout_source_new(0);
  g_source_set_callback(
      alarm, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr, nullptr);
  g_source_attach(alarm, context);
  bool isDone = done();
  while (!isDone) {
    const gint64 end = deadline();
    if (g_get_monotonic_time() >= end) break;
    g_source_set_ready_time(alarm, end);
    g_main_context_iteration(context, TRUE);
    isDone = done();
  }
  g_source_destroy(alarm);
  g_source_unref(alarm);
  return isDone;
}

}  // namespace hushbox
