#include "rehearsal/AudioClient.h"

#include <cmath>
#include <future>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr Milliseconds answerTime{10'000};

SourceState stateOf(const pa_source_info& info) {
  return {static_cast<double>(pa_cvolume_max(&info.volume)) / PA_VOLUME_NORM, info.mute != 0,
          info.state == PA_SOURCE_RUNNING};
}

/// A question to the server: starts it with the client's thread locked, waits with it running.
template <typename Answer>
class Question {
 public:
  explicit Question(const AudioClient& client) : client_(client) {}

  template <typename Start>
  Answer ask(const std::string& what, const Start& start) {
    auto answer = promise_.get_future();
    pa_operation* operation = nullptr;
    {
      const AudioClient::Lock lock(client_);
      operation = client_.context() ? start(client_.context(), this) : nullptr;
    }
    if (!operation) throw DeskError(what + " cannot be asked: the sound server is gone");
    const auto end = std::chrono::steady_clock::now() + answerTime;
    while (answer.wait_for(Milliseconds{50}) != std::future_status::ready) {
      if (client_.isConnected() && std::chrono::steady_clock::now() < end) continue;
      break;
    }
    {
      // Once cancelled, no answer comes any more; one that has just come is still good.
      const AudioClient::Lock lock(client_);
      pa_operation_cancel(operation);
      pa_operation_unref(operation);
    }
    if (answer.wait_for(Milliseconds{0}) != std::future_status::ready) {
      throw DeskError(what + ": the sound server did not answer");
    }
    return answer.get();
  }

  void answer(Answer value) {
    if (!answered_) promise_.set_value(std::move(value));
    answered_ = true;
  }

 private:
  const AudioClient& client_;
  std::promise<Answer> promise_;
  bool answered_ = false;
};

void succeed(pa_context*, int success, void* question) {
  static_cast<Question<bool>*>(question)->answer(success != 0);
}

void takeIndex(pa_context*, uint32_t index, void* question) {
  static_cast<Question<uint32_t>*>(question)->answer(index);
}

void takeSource(pa_context*, const pa_source_info* info, int end, void* question) {
  auto* asked = static_cast<Question<std::optional<SourceState>>*>(question);
  asked->answer(end == 0 && info ? std::optional<SourceState>(stateOf(*info)) : std::nullopt);
}

void require(bool success, const std::string& what) {
  if (!success) throw DeskError("the sound server refused: " + what);
}

}  // namespace

struct AudioClient::Watch {
  std::string source;
  std::function<void(const SourceState&)> changed;

  static void event(pa_context* context, pa_subscription_event_type_t type, uint32_t, void* watch) {
    if ((type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE) return;
    auto* self = static_cast<Watch*>(watch);
    pa_operation* asked =
        pa_context_get_source_info_by_name(context, self->source.c_str(), tell, watch);
    if (asked) pa_operation_unref(asked);
  }

  static void tell(pa_context*, const pa_source_info* info, int end, void* watch) {
    if (end == 0 && info) static_cast<Watch*>(watch)->changed(stateOf(*info));
  }
};

AudioClient::AudioClient(const std::string& server, const std::string& name, Milliseconds deadline)
    : loop_(pa_threaded_mainloop_new()) {
  pa_threaded_mainloop_start(loop_);
  const bool connected = holdsWithin([&] { return connect(server, name); }, deadline);
  if (connected) return;
  pa_threaded_mainloop_stop(loop_);
  pa_threaded_mainloop_free(loop_);
  throw DeskError("no sound server answers at " + server);
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
  holdsWithin(settled, answerTime);
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
  const uint32_t index = Question<uint32_t>(*this).ask("module " + module, [&](pa_context* context,
                                                                               void* question) {
    return pa_context_load_module(context, module.c_str(), arguments.c_str(), takeIndex, question);
  });
  require(index != PA_INVALID_INDEX, "to load " + module + " " + arguments);
  return index;
}

void AudioClient::unloadModule(uint32_t index) {
  require(Question<bool>(*this).ask("unloading a module",
                                    [&](pa_context* context, void* question) {
                                      return pa_context_unload_module(context, index, succeed,
                                                                      question);
                                    }),
          "to unload a module");
}

std::optional<SourceState> AudioClient::source(const std::string& name) const {
  return Question<std::optional<SourceState>>(*this).ask(
      "the source " + name, [&](pa_context* context, void* question) {
        return pa_context_get_source_info_by_name(context, name.c_str(), takeSource, question);
      });
}

void AudioClient::setVolume(const std::string& source, double volume) {
  // A single value goes for all channels of any source.
  pa_cvolume wanted;
  pa_cvolume_set(&wanted, 1, static_cast<pa_volume_t>(std::lround(volume * PA_VOLUME_NORM)));
  require(Question<bool>(*this).ask("setting a volume",
                                    [&](pa_context* context, void* question) {
                                      return pa_context_set_source_volume_by_name(
                                          context, source.c_str(), &wanted, succeed, question);
                                    }),
          "to set the volume of " + source);
}

void AudioClient::setMuteSwitch(const std::string& source, bool muted) {
  require(Question<bool>(*this).ask("setting a mute switch",
                                    [&](pa_context* context, void* question) {
                                      return pa_context_set_source_mute_by_name(
                                          context, source.c_str(), muted, succeed, question);
                                    }),
          "to set the mute switch of " + source);
}

void AudioClient::watchSource(const std::string& name,
                              std::function<void(const SourceState&)> changed) {
  watch_ = std::make_unique<Watch>(Watch{name, std::move(changed)});
  const bool subscribed =
      Question<bool>(*this).ask("a subscription", [&](pa_context* context, void* question) {
        pa_context_set_subscribe_callback(context, Watch::event, watch_.get());
        return pa_context_subscribe(context, PA_SUBSCRIPTION_MASK_SOURCE, succeed, question);
      });
  require(subscribed, "a subscription");
}

}  // namespace hushbox::rehearsal
