#include "platform/linux/audio/PulseConnection.h"

#include <pulse/glib-mainloop.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "support/BundleIdentifier.h"

namespace hushbox {
namespace {

// Never freed, like the main context that it is attached to: the last connection may be destroyed
// inside one of libpulse's callbacks.
pa_mainloop_api* mainLoopApi() {
  static pa_glib_mainloop* const loop = pa_glib_mainloop_new(nullptr);
  return pa_glib_mainloop_get_api(loop);
}

pa_context* makeContext() {
  const std::unique_ptr<pa_proplist, decltype(&pa_proplist_free)> properties(pa_proplist_new(),
                                                                             pa_proplist_free);
  pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, std::string(bundleIdentifier).c_str());
  return pa_context_new_with_proplist(mainLoopApi(), "Hushbox", properties.get());
}

}  // namespace

PulseConnection::PulseConnection(Client& client) : client_(client) {
  open();
}

PulseConnection::~PulseConnection() {
  if (retry_ != 0) g_source_remove(retry_);
  close();
}

void PulseConnection::open() {
  context_ = makeContext();
  if (context_ == nullptr ||
      pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0 ||
      !PA_CONTEXT_IS_GOOD(pa_context_get_state(context_))) {
    close();
    openAfterDelay();
    return;
  }
  // Set only now, or an immediate failure would be handled twice: above and in the callback.
  pa_context_set_state_callback(
      context_,
      [](pa_context*, void* self) { static_cast<PulseConnection*>(self)->stateChanged(); }, this);
}

void PulseConnection::close() {
  ready_ = false;
  if (context_ == nullptr) return;
  pa_context* const context = std::exchange(context_, nullptr);
  pa_context_set_state_callback(context, nullptr, nullptr);
  pa_context_set_subscribe_callback(context, nullptr, nullptr);
  pa_context_disconnect(context);
  pa_context_unref(context);
}

void PulseConnection::stateChanged() {
  const pa_context_state_t state = pa_context_get_state(context_);
  if (state == PA_CONTEXT_READY) {
    ready_ = true;
    delay_ = minRetryDelay;
    client_.connected(*context_);
  } else if (!PA_CONTEXT_IS_GOOD(state)) {
    const bool wasReady = ready_;
    close();
    openAfterDelay();
    if (wasReady) client_.disconnected();
  }
}

void PulseConnection::openAfterDelay() {
  retry_ = g_timeout_add(
      static_cast<guint>(delay_.count()),
      [](gpointer self) -> gboolean {
        auto& connection = *static_cast<PulseConnection*>(self);
        connection.retry_ = 0;
        connection.open();
        return G_SOURCE_REMOVE;
      },
      this);
  delay_ = std::min(2 * delay_, maxRetryDelay);
}

}  // namespace hushbox
