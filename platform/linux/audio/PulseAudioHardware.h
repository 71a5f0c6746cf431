#pragma once

#include <pulse/pulseaudio.h>

#include <chrono>

#include "platform/AudioHardware.h"
#include "platform/linux/audio/PropertyListeners.h"
#include "platform/linux/audio/PulseConnection.h"
#include "platform/linux/audio/PulseSourceTable.h"

namespace hushbox {

/// The input devices of a PulseAudio server, or of PipeWire's PulseAudio server. Main thread only.
/// Runs on the default main context; a listener may destroy it.
///
/// The devices are the server's sources except the monitors of sinks. A source that is unplugged
/// and plugged in again gets a new identifier, and so does every source when the server is lost.
/// The device list is empty while there is no server. Within `PulseConnection::maxRetryDelay` of
/// its return the list is filled again and its listeners are called.
///
/// Reads return the last reported value and never wait. A written value can be read back once the
/// server has confirmed it, some tenths of a millisecond later. Writes don't wait either.
///
/// Listeners are called once per change of the value that a read returns. Moving the mute switch of
/// a source whose volume is 0, or changing a volume above 100 %, calls no listener. The server's
/// events carry no value, so each one is answered with a request for the source's state. A volume
/// that drops and is restored is seen as two changes if that request reaches the server before the
/// volume is restored.
class PulseAudioHardware final : public AudioHardware, private PulseConnection::Client {
 public:
  /// How long the constructor waits for the list of devices.
  static constexpr std::chrono::milliseconds startTimeout{1000};

  /// Connects, and runs the default main context until the devices are known, the server turns out
  /// to be absent, or `startTimeout` has passed. In the latter cases the device list is empty until
  /// the server replies.
  PulseAudioHardware();

  bool hasProperty(AudioObjectID object, const AudioPropertyAddress& address) override;
  AudioStatus getPropertyDataSize(AudioObjectID object, const AudioPropertyAddress& address,
                                  std::uint32_t& size) override;
  AudioStatus getPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t& size, void* data) override;
  AudioStatus getPropertyText(AudioObjectID object, const AudioPropertyAddress& address,
                              std::string& text) override;

  /// Only the input volume is writable. Values are clamped to the range from 0 to 1. 0 sets every
  /// channel to 0; any other value sets the loudest channel, keeps the channels' balance and clears
  /// the mute switch. The switch is never set: programs in a call watch it and would mirror it.
  /// Status 0 means that the request was sent, not that the server has accepted it.
  ///
  /// A write may have no effect while no stream runs: PipeWire 1.4 reports a write to a virtual
  /// source only once a stream has run on it. If the server has reported no change since our last
  /// write when a stream starts, the source is read again, and if it is still unchanged the write
  /// is repeated once. Any reported change, ours or another program's, cancels the repeat. The
  /// value that arrives is always the last one written, but possibly long after the write.
  AudioStatus setPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t size, const void* data) override;

  RegistrationToken addPropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                        std::function<void()> listener) override;
  AudioStatus removePropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                     RegistrationToken listener) override;

 private:
  void connected(pa_context& context) override;
  void disconnected() override;

  static void onEvent(pa_context* context, pa_subscription_event_type_t type, std::uint32_t index,
                      void* self);
  static void onSource(pa_context* context, const pa_source_info* info, int last, void* self);
  static void onStartedSource(pa_context* context, const pa_source_info* info, int last,
                              void* self);
  static void onStream(pa_context* context, const pa_source_output_info* info, int last,
                       void* self);

  void waitForDevices();
  AudioStatus check(AudioObjectID object, const AudioPropertyAddress& address) const;
  void readStartedSources(pa_context& context, const PulseSourceTable::Changes& changes);
  void repeatUnconfirmedWrite(std::uint32_t sourceIndex);
  AudioStatus writeVolume(const PulseSourceTable::Source& source, float level);
  void note(PulseSourceTable::Changes changes);
  void announce();

  PulseSourceTable table_;
  PropertyListeners listeners_;
  PulseSourceTable::Changes unannounced_;
  bool complete_ = false;
  PulseConnection connection_{*this};
};

}  // namespace hushbox
