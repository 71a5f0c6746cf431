#include "platform/linux/audio/PulseConnection.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "support/BundleIdentifier.h"

namespace hushbox {
namespace {

pa_context* makeContext(pa_mainloop_api& loop) {
  const std::unique_ptr<pa_proplist, decltype(&pa_proplist_free)> properties(pa_proplist_new(),
                                                                             pa_proplist_free);
  pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, std::string(bundleIdentifier).c_str());
  return pa_context_new_with_proplist(&loop, "Hushbox", properties.get());
}

}  // namespace

PulseConnection::PulseConnection(pa_mainloop_api& loop, Client& client)
    : loop_(loop), client_(client) {
  open();
}

PulseConnection::~PulseConnection() {
  if (retry_ != nullptr) loop_.time_free(retry_);
  close();
}

void PulseConnection::open() {
  context_ = makeContext(loop_);
  if (context_ == nullptr ||
      pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0 ||
      !PA_CONTEXT_IS_GOOD(pa_context_get_state(context_))) {
    openAfterDelay();
    close();
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
    lost();
  }
}

void PulseConnection::reconnect() {
  if (ready_) lost();
}

void PulseConnection::lost() {
  const bool wasReady = ready_;
  openAfterDelay();
  close();
  if (wasReady) client_.disconnected();
}

void PulseConnection::openAfterDelay() {
  const auto retry = [](pa_mainloop_api* loop, pa_time_event* event, const timeval*, void* self) {
    auto& connection = *static_cast<PulseConnection*>(self);
    loop->time_free(event);
    connection.retry_ = nullptr;
    connection.open();
  };
  const auto delay = static_cast<pa_usec_t>(delay_.count()) * PA_USEC_PER_MSEC;
  if (context_ != nullptr) {
    // Counts elapsed time. A time of day would be converted with a second reading of the clock, and
    // one that is set back in between would put the attempt off by as much.
    retry_ = pa_context_rttime_new(context_, pa_rtclock_now() + delay, retry, this);
  } else {
    timeval due{};
    retry_ = loop_.time_new(&loop_, pa_timeval_add(pa_gettimeofday(&due), delay), retry, this);
  }
  delay_ = std::min(2 * delay_, maxRetryDelay);
}

}  // namespace hushbox
