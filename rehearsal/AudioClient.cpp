#include "rehearsal/AudioClient.h"

#include <cmath>
#include <future>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr Milliseconds replyTimeout{10'000};

SourceState stateOf(const pa_source_info& info) {
  return {static_cast<double>(pa_cvolume_max(&info.volume)) / PA_VOLUME_NORM, info.mute != 0,
          info.state == PA_SOURCE_RUNNING, info.index};
}

/// One request to the server. Sends it with the client's thread locked and waits for the reply with
/// that thread running.
template <typename Reply>
class Request {
 public:
  explicit Request(const AudioClient& client) : client_(client) {}

  template <typename Start>
  Reply send(const std::string& what, const Start& start) {
    auto reply = promise_.get_future();
    pa_operation* operation = nullptr;
    {
      const AudioClient::Lock lock(client_);
      operation = client_.context() ? start(client_.context(), this) : nullptr;
    }
    if (!operation) throw DeskError(what + ": not connected to the sound server");
    const auto end = std::chrono::steady_clock::now() + replyTimeout;
    while (reply.wait_for(Milliseconds{50}) != std::future_status::ready) {
      if (client_.isConnected() && std::chrono::steady_clock::now() < end) continue;
      break;
    }
    {
      // After this no reply arrives; one that has just arrived still counts.
      const AudioClient::Lock lock(client_);
      pa_operation_cancel(operation);
      pa_operation_unref(operation);
    }
    if (reply.wait_for(Milliseconds{0}) != std::future_status::ready) {
      throw DeskError(what + ": no reply from the sound server");
    }
    return reply.get();
  }

  /// Only the first reply counts: a list of sources ends with an empty one.
  void reply(Reply value) {
    if (!replied_) promise_.set_value(std::move(value));
    replied_ = true;
  }

 private:
  const AudioClient& client_;
  std::promise<Reply> promise_;
  bool replied_ = false;
};

void onSuccess(pa_context*, int success, void* request) {
  static_cast<Request<bool>*>(request)->reply(success != 0);
}

void onIndex(pa_context*, uint32_t index, void* request) {
  static_cast<Request<uint32_t>*>(request)->reply(index);
}

void onSource(pa_context*, const pa_source_info* info, int last, void* request) {
  auto* sent = static_cast<Request<std::optional<SourceState>>*>(request);
  sent->reply(last == 0 && info ? std::optional<SourceState>(stateOf(*info)) : std::nullopt);
}

void require(bool success, const std::string& what) {
  if (!success) throw DeskError("the sound server refused: " + what);
}

}  // namespace

struct AudioClient::Watch {
  std::string source;
  std::function<void(const SourceState&)> changed;

  static void onEvent(pa_context* context, pa_subscription_event_type_t type, uint32_t,
                      void* watch) {
    if ((type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE) return;
    auto* self = static_cast<Watch*>(watch);
    pa_operation* operation =
        pa_context_get_source_info_by_name(context, self->source.c_str(), onState, watch);
    if (operation) pa_operation_unref(operation);
  }

  static void onState(pa_context*, const pa_source_info* info, int last, void* watch) {
    if (last == 0 && info) static_cast<Watch*>(watch)->changed(stateOf(*info));
  }
};

AudioClient::AudioClient(const std::string& server, const std::string& name, Milliseconds deadline)
    : loop_(pa_threaded_mainloop_new()) {
  pa_threaded_mainloop_start(loop_);
  const bool connected = holdsWithin([&] { return connect(server, name); }, deadline);
  if (connected) return;
  pa_threaded_mainloop_stop(loop_);
  pa_threaded_mainloop_free(loop_);
  throw DeskError("no reply from a sound server at " + server);
}

AudioClient::~AudioClient() {
  disconnect();
  pa_threaded_mainloop_stop(loop_);
  pa_threaded_mainloop_free(loop_);
}

bool AudioClient::connect(const std::string& server, const std::string& name) {
  const auto state = [this] {
    const Lock lock(*this);
    return pa_context_get_state(context_);
  };
  {
    const Lock lock(*this);
    context_ = pa_context_new(pa_threaded_mainloop_get_api(loop_), name.c_str());
    pa_context_connect(context_, server.c_str(), PA_CONTEXT_NOAUTOSPAWN, nullptr);
  }
  const auto settled = [&] { return state() == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state()); };
  holdsWithin(settled, replyTimeout);
  if (state() == PA_CONTEXT_READY) return true;
  disconnect();
  return false;
}

void AudioClient::disconnect() {
  const Lock lock(*this);
  if (!context_) return;
  pa_context_set_subscribe_callback(context_, nullptr, nullptr);
  pa_context_disconnect(context_);
  pa_context_unref(context_);
  context_ = nullptr;
}

bool AudioClient::isConnected() const {
  const Lock lock(*this);
  return context_ && pa_context_get_state(context_) == PA_CONTEXT_READY;
}

uint32_t AudioClient::loadModule(const std::string& module, const std::string& arguments) {
  const uint32_t index =
      Request<uint32_t>(*this).send("module " + module, [&](pa_context* context, void* request) {
        return pa_context_load_module(context, module.c_str(), arguments.c_str(), onIndex, request);
      });
  require(index != PA_INVALID_INDEX, "to load " + module + " " + arguments);
  return index;
}

void AudioClient::unloadModule(uint32_t index) {
  require(Request<bool>(*this).send("unloading a module",
                                    [&](pa_context* context, void* request) {
                                      return pa_context_unload_module(context, index, onSuccess,
                                                                      request);
                                    }),
          "to unload a module");
}

std::optional<SourceState> AudioClient::source(const std::string& name) const {
  return Request<std::optional<SourceState>>(*this).send(
      "the source " + name, [&](pa_context* context, void* request) {
        return pa_context_get_source_info_by_name(context, name.c_str(), onSource, request);
      });
}

void AudioClient::setVolume(const std::string& source, double volume) {
  // A volume with one channel applies to all channels of the source.
  pa_cvolume wanted;
  pa_cvolume_set(&wanted, 1, static_cast<pa_volume_t>(std::lround(volume * PA_VOLUME_NORM)));
  require(Request<bool>(*this).send("setting a volume",
                                    [&](pa_context* context, void* request) {
                                      return pa_context_set_source_volume_by_name(
                                          context, source.c_str(), &wanted, onSuccess, request);
                                    }),
          "to set the volume of " + source);
}

void AudioClient::setMuteSwitch(const std::string& source, bool muted) {
  require(Request<bool>(*this).send("setting a mute switch",
                                    [&](pa_context* context, void* request) {
                                      return pa_context_set_source_mute_by_name(
                                          context, source.c_str(), muted, onSuccess, request);
                                    }),
          "to set the mute switch of " + source);
}

void AudioClient::watchSource(const std::string& name,
                              std::function<void(const SourceState&)> changed) {
  watch_ = std::make_unique<Watch>(Watch{name, std::move(changed)});
  const bool subscribed =
      Request<bool>(*this).send("a subscription", [&](pa_context* context, void* request) {
        pa_context_set_subscribe_callback(context, Watch::onEvent, watch_.get());
        return pa_context_subscribe(context, PA_SUBSCRIPTION_MASK_SOURCE, onSuccess, request);
      });
  require(subscribed, "a subscription");
}

}  // namespace hushbox::rehearsal
