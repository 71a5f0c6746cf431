#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/AudioHardware.h"
#include "platform/linux/audio/PropertyListeners.h"
#include "platform/linux/audio/PulseReportQueue.h"
#include "platform/linux/audio/PulseSourceTable.h"
#include "platform/linux/audio/PulseThread.h"

namespace hushbox {

/// The input devices of a PulseAudio server, or of PipeWire's PulseAudio server. Main thread only.
/// Delivers on the default main context; a listener may destroy it.
///
/// The devices are the server's sources except the monitors of sinks, hardware first. A source that
/// is unplugged and plugged in again gets a new identifier, and so does every source when the
/// server is lost. The device list is empty while there is no server. Within
/// `PulseConnection::maxRetryDelay` of its return the list is filled again and its listeners are
/// called. A source that is plugged in is listed once it is set up (see `PulseObserver`).
///
/// A thread of its own receives the server's events and queues the states (see `PulseObserver`).
/// The main thread never waits for that thread or for the server except in the constructor and the
/// destructor.
///
/// States are delivered one by one, in the order in which they happened. Reads return the state
/// delivered last, and during the call of a listener that is the state it is called for, whatever
/// has been written meanwhile. A written value can be read back once the server has confirmed it,
/// some tenths of a millisecond later.
///
/// Listeners are called once per change of the value that a read returns. Moving the mute switch of
/// a source whose volume is 0, or changing a volume above 100 %, calls no listener. A volume that
/// drops to 0 and is restored is delivered as two changes, even if the program that restores it
/// does so at once. Only a drop that is restored without waiting for the server's event goes
/// unnoticed: the server merges two changes of one moment.
class PulseAudioHardware final : public AudioHardware {
 public:
  /// How long the constructor waits for the list of devices.
  static constexpr std::chrono::milliseconds startTimeout{1000};

  /// Connects and blocks until the devices are known, the server turns out to be absent, or
  /// `startTimeout` has passed. In the latter cases the device list is empty until the server
  /// replies.
  PulseAudioHardware();

  /// Blocks for at most `PulseThread::stopTimeout`.
  ~PulseAudioHardware() override;

  bool hasProperty(AudioObjectID object, const AudioPropertyAddress& address) override;
  AudioStatus getPropertyDataSize(AudioObjectID object, const AudioPropertyAddress& address,
                                  std::uint32_t& size) override;
  AudioStatus getPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t& size, void* data) override;
  AudioStatus getPropertyText(AudioObjectID object, const AudioPropertyAddress& address,
                              std::string& text) override;

  /// Only the input volume is writable. Values are clamped to the range from 0 to 1. 0 mutes the
  /// source by its level or its mute switch (see `PulseSourceTable`). Any other value sets the
  /// loudest channel, keeps the channels' balance and clears the mute switch. A level above 100 %
  /// is read as 1, and writing 1 keeps or restores it.
  ///
  /// Status 0 means that the request was sent, not that the server has accepted it. A write that
  /// the server has not acted on by the time a stream starts is repeated once then. Listeners are
  /// called when the value changes, so possibly long after the write.
  AudioStatus setPropertyData(AudioObjectID object, const AudioPropertyAddress& address,
                              std::uint32_t size, const void* data) override;

  RegistrationToken addPropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                        std::function<void()> listener) override;
  AudioStatus removePropertyListener(AudioObjectID object, const AudioPropertyAddress& address,
                                     RegistrationToken listener) override;

  /// The processes that record from the devices that the program follows: those with a listener of
  /// `audio::runningSomewhere`. A process is what the stream's client says it is, which in a
  /// sandbox with process identifiers of its own is another number than outside.
  std::vector<std::int32_t> recordingProcesses() const;

  /// Delivers the queued states that arrived no later than `latest`, oldest first: a timer that
  /// fell due afterwards must not overtake them. Without this call the main context delivers them.
  void deliverUntil(Instant latest);

 private:
  void apply(const PulseServerReport& report);
  void apply(const PulseServerLoss& report);
  void apply(const PulseSourceReport& report);
  void apply(const PulseSourceRemoval& report);
  void apply(const PulseVolumeBounce& report);
  void apply(const PulseStreamReport& report);
  void apply(const PulseStreamRemoval& report);

  AudioStatus check(AudioObjectID object, const AudioPropertyAddress& address) const;
  void send(PulseWrite write);
  void announce(const PulseSourceTable::Changes& changes);

  PulseSourceTable table_;
  PropertyListeners listeners_;
  /// The connection that the table's sources belong to, 0 while there is none.
  std::uint32_t connection_ = 0;
  std::shared_ptr<PulseReportQueue> reports_;
  PulseThread thread_;
};

}  // namespace hushbox
