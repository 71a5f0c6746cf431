#include "rehearsal/RecordingStream.h"

#include <cstring>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr pa_sample_spec speech{PA_SAMPLE_S16LE, 16000, 1};
// Mixers update their meters 25 times a second.
constexpr pa_sample_spec peaks{PA_SAMPLE_FLOAT32LE, 25, 1};

constexpr int connectAttempts = 3;

pa_buffer_attr fragments(uint32_t bytes) {
  pa_buffer_attr attributes;
  std::memset(&attributes, 0xff, sizeof attributes);
  attributes.fragsize = bytes;
  return attributes;
}

void discard(pa_stream* stream, size_t, void* counter) {
  const void* data = nullptr;
  size_t size = 0;
  while (pa_stream_readable_size(stream) > 0 && pa_stream_peek(stream, &data, &size) == 0) {
    if (size == 0) return;
    pa_stream_drop(stream);
    static_cast<std::atomic<std::uint64_t>*>(counter)->fetch_add(size);
  }
  wakeWaiters();
}

}  // namespace

RecordingStream::RecordingStream(std::shared_ptr<AudioClient> client, const std::string& source,
                                 Kind kind)
    : client_(std::move(client)) {
  const auto accepted = [this] {
    const AudioClient::Lock lock(*client_);
    return pa_stream_get_state(stream_) == PA_STREAM_READY;
  };
  const auto flowing = [&] { return accepted() && (kind == Kind::Corked || bytes_ > 0); };
  for (int i = 0; i < connectAttempts; ++i) {
    connect(source, kind);
    if (holdsWithin(flowing, serverTimeout / connectAttempts)) return;
    release();
  }
  throw DeskError("no sound arrives from " + source);
}

RecordingStream::~RecordingStream() {
  release();
}

void RecordingStream::connect(const std::string& source, Kind kind) {
  const bool meter = kind == Kind::Meter;
  pa_proplist* properties = pa_proplist_new();
  if (meter) {
    pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, "org.PulseAudio.pavucontrol");
    pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, "PulseAudio Volume Control");
  }
  const pa_buffer_attr attributes = fragments(meter ? sizeof(float) : 320);
  int flags = PA_STREAM_ADJUST_LATENCY;
  if (meter) flags |= PA_STREAM_PEAK_DETECT | PA_STREAM_DONT_MOVE;
  if (kind == Kind::Corked) flags |= PA_STREAM_START_CORKED;
  const AudioClient::Lock lock(*client_);
  if (client_->context()) {
    stream_ = pa_stream_new_with_proplist(client_->context(), meter ? "Peak detect" : "Meeting",
                                          meter ? &peaks : &speech, nullptr, properties);
  }
  pa_proplist_free(properties);
  if (!stream_) throw DeskError("cannot record: not connected to the sound server");
  pa_stream_set_read_callback(stream_, discard, &bytes_);
  pa_stream_connect_record(stream_, source.c_str(), &attributes,
                           static_cast<pa_stream_flags_t>(flags));
}

void RecordingStream::release() {
  const AudioClient::Lock lock(*client_);
  pa_stream_set_read_callback(stream_, nullptr, nullptr);
  pa_stream_disconnect(stream_);
  pa_stream_unref(stream_);
}

void RecordingStream::cork() {
  setCorked(true);
}

void RecordingStream::uncork() {
  setCorked(false);
}

void RecordingStream::setCorked(bool corked) {
  const AudioClient::Lock lock(*client_);
  pa_operation* operation = pa_stream_cork(stream_, corked, nullptr, nullptr);
  if (!operation) throw DeskError("the recording cannot be paused or resumed");
  pa_operation_unref(operation);
}

}  // namespace hushbox::rehearsal
