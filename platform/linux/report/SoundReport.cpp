#include "platform/linux/report/SoundReport.h"

#include <pulse/pulseaudio.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <string>

#include "platform/linux/audio/PulseConnection.h"
#include "platform/linux/audio/PulseReport.h"
#include "support/Text.h"

namespace hushbox {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds serverTimeout{2};

/// What the server has, requested once.
class Listing final : private PulseConnection::Client {
 public:
  Listing() : loop_(pa_mainloop_new()) {
    {
      PulseConnection connection(*pa_mainloop_get_api(loop_), *this);
      const auto deadline = Clock::now() + serverTimeout;
      while (!isComplete_ && connection.isOpen() && Clock::now() < deadline) {
        const auto left =
            std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now());
        if (pa_mainloop_prepare(loop_, static_cast<int>(left.count())) < 0 ||
            pa_mainloop_poll(loop_) < 0 || pa_mainloop_dispatch(loop_) < 0)
          break;
      }
      wasOpen_ = connection.isOpen();
    }
    pa_mainloop_free(loop_);
  }
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;

  bool isComplete() const { return isComplete_; }
  /// Whether there is a server, which may not have replied.
  bool wasOpen() const { return wasOpen_; }

  std::string server;
  std::string defaultSource;
  std::vector<PulseSourceReport> sources;
  std::vector<PulseStreamReport> streams;

 private:
  void connected(pa_context& context) override {
    const auto unref = [](pa_operation* operation) {
      if (operation) pa_operation_unref(operation);
    };
    unref(pa_context_get_server_info(
        &context,
        [](pa_context*, const pa_server_info* info, void* self) {
          if (!info) return;
          auto& listing = *static_cast<Listing*>(self);
          const auto text = [](const char* value) { return std::string(value ? value : ""); };
          listing.server = text(info->server_name) + ' ' + text(info->server_version);
          listing.defaultSource = text(info->default_source_name);
        },
        this));
    unref(pa_context_get_source_info_list(
        &context,
        [](pa_context*, const pa_source_info* info, int last, void* self) {
          if (!last && info) static_cast<Listing*>(self)->sources.emplace_back(*info);
        },
        this));
    // The server replies in order, so this reply is the last one.
    unref(pa_context_get_source_output_info_list(
        &context,
        [](pa_context*, const pa_source_output_info* info, int last, void* self) {
          auto& listing = *static_cast<Listing*>(self);
          if (!last && info) listing.streams.emplace_back(*info);
          if (last) listing.isComplete_ = true;
        },
        this));
  }
  void disconnected() override {}

  pa_mainloop* const loop_;
  bool isComplete_ = false;
  bool wasOpen_ = false;
};

std::string lineOf(const PulseSourceReport& source, const Listing& listing) {
  const bool isFollowed = text::contains(source.name, "Jabra");
  // Bluetooth devices often have their owner's name.
  std::string line =
      "Input: " + (isFollowed ? text::escapedForTerminal(source.name) : "another device");
  const auto percent = 100.0 * pa_cvolume_max(&source.volume) / PA_VOLUME_NORM;
  line += ", volume " + std::to_string(std::lround(percent)) + " %";
  line += source.muteSwitch ? ", mute switch on" : ", mute switch off";
  if (source.key == listing.defaultSource) line += ", default";
  const bool isRecorded = std::any_of(
      listing.streams.begin(), listing.streams.end(),
      [&](const auto& stream) { return stream.records && stream.source == source.index; });
  return line + (isRecorded ? ", in use" : ", not in use");
}

}  // namespace

ReportLines soundReport() {
  const Listing listing;
  if (!listing.isComplete())
    return {listing.wasOpen() ? "Sound server: does not reply" : "Sound server: not running"};
  ReportLines lines{"Sound server: " + text::escapedForTerminal(listing.server)};
  bool hasSpeakerphone = false;
  for (const PulseSourceReport& source : listing.sources) {
    if (source.isMonitor) continue;
    hasSpeakerphone |= text::contains(source.name, "Jabra");
    lines.push_back(lineOf(source, listing));
  }
  if (!hasSpeakerphone) lines.emplace_back("Speakerphone: no input has \"Jabra\" in its name");
  return lines;
}

}  // namespace hushbox
