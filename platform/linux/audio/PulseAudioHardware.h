#pragma once

#include <pulse/pulseaudio.h>

#include <chrono>

#include "platform/AudioHardware.h"
#include "platform/linux/audio/PropertyListeners.h"
#include "platform/linux/audio/PulseConnection.h"
#include "platform/linux/audio/PulseSourceTable.h"

namespace hushbox {

/// The input devices of a PulseAudio server, or of PipeWire in its place. Main thread only; it
/// lives on the default main context, and a listener may end it.
///
/// The devices are the server's sources, monitors of sinks left out. An identifier stands for one
/// stay of a source: what is unplugged and comes back, and everything after a loss of the server,
/// is another device. While there is no server the device list is empty; it fills again, and the
/// list's listeners are called, within `PulseConnection::longestDelay` of the server's return.
///
/// Reads never wait: they give what the server last said, so that a value just written is read back
/// only once the server has confirmed it, some tenths of a millisecond later. A write is sent and
/// not waited for either.
///
/// Listeners are called once per change of the value that a read gives: moving the mute switch of a
/// source that is at the bottom anyway, or its volume above 100 %, calls nobody. Each event of the
/// server is answered by a question of ours. A volume that falls and is put back is therefore seen
/// as two changes when our question arrives at the server before the volume is put back. A program
/// that reacts to the fall has to ask the same question first, so it comes later; only two writes
/// in immediate succession, or a loop held up for as long as the fall lasts, hide it. Nothing in
/// the protocol tells of those, and none is guessed at.
class PulseAudioHardware final : public AudioHardware, private PulseConnection::Client {
 public:
  /// How long the constructor waits for the server's first answers.
  static constexpr std::chrono::milliseconds startPatience{1000};

  /// Connects, and lets the default main context run until the devices are known, or the server
  /// turns out to be absent, or `startPatience` has passed. Then it is without devices for now.
  PulseAudioHardware();

  bool hasProperty(AudioObjectID object, const AudioPropertyAddress& address) override;
  AudioStatus getPropertyDataSize(AudioObjectID object, const AudioPropertyAddress& address,
                                  std::uint32_t& size) override;
  AudioStatus getPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t& size, void* data) override;
  AudioStatus getPropertyText(AudioObjectID object, const AudioPropertyAddress& address,
                              std::string& text) override;

  /// Only the input volume can be written, from 0 to 1; beyond that the nearest of the two counts.
  /// 0 takes every channel to the bottom; any other level sets the loudest channel, keeps the
  /// channels' balance and opens the mute switch. The switch is never closed: programs in a call
  /// watch it and would mirror what is not theirs to mirror.
  /// 0 says that the request was sent, no more.
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
  static void onStream(pa_context* context, const pa_source_output_info* info, int last,
                       void* self);

  void waitForDevices();
  AudioStatus check(AudioObjectID object, const AudioPropertyAddress& address) const;
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
