#pragma once

#include <memory>
#include <string>
#include <vector>

#include "rehearsal/AudioClient.h"
#include "rehearsal/AudioFlavour.h"
#include "rehearsal/RecordingStream.h"
#include "rehearsal/Session.h"
#include "rehearsal/VolumeObserver.h"

namespace hushbox::rehearsal {

/// A real sound server with a speakerphone to plug in, at the session's PULSE_SERVER.
///
/// Decoys are always there: a loudspeaker of the speakerphone's name, whose "Monitor of ..." source
/// therefore bears the name too, and another microphone. Volumes are fractions of full volume
/// (1.0 is 100 %), linear in what the server counts. Each call blocks until the server has
/// confirmed it, some tenths of a millisecond, and throws DeskError when the server is gone,
/// refuses, or has not answered within 10 s. Call on one thread.
class AudioServer {
 public:
  /// The speakerphone's source name, as a real one's is made of bus, maker and model.
  static constexpr const char* speakerphoneSource = "alsa_input.usb-Jabra_Speak2_75";
  static constexpr const char* speakerphoneName = "Jabra Speak2 75";
  static constexpr const char* decoySource = "alsa_input.pci-builtin_microphone";

  /// Starts the server and puts up the decoys; the speakerphone is not plugged in yet.
  explicit AudioServer(const Session& session, AudioFlavour flavour = AudioFlavour::PulseAudio);
  ~AudioServer();

  AudioFlavour flavour() const { return flavour_; }
  bool isRunning() const;

  /// Ends the server as a crash would (SIGKILL); streams and clients lose their connection.
  void kill();
  /// Starts the server again at the same address, ending it first if it runs. What was plugged in
  /// is there again, at full volume, as hardware would be; indices start over.
  void restart();
  /// Stops the server in its tracks; until thaw() it answers nobody.
  void freeze();
  void thaw();

  /// Plugs the speakerphone in (at full volume) and waits until a client can see it.
  void plugSpeakerphone(const std::string& name = speakerphoneName);
  void unplugSpeakerphone();
  bool hasSpeakerphone() const;
  /// Any further microphone, for the case of two headsets.
  void plug(const std::string& source, const std::string& name);
  void unplug(const std::string& source);

  /// For a virtual source that a test has loaded itself; plug() does it too. PipeWire 1.4 reports a
  /// write to such a source only once a stream has run on it. Runs a meter on the source for a
  /// moment; writes then take effect at once, even after the server has suspended the source.
  void makeWritable(const std::string& source);

  /// What the speakerphone's mute button does: 0.0 is muted. Writing the present value again
  /// gives no event.
  void setVolume(double volume);
  double volume() const;
  /// The source's own mute switch, which some button presses arrive as.
  void setMuteSwitch(bool muted);
  bool muteSwitch() const;
  /// Whether the server counts the speakerphone as running, for whatever reason.
  bool isSpeakerphoneRunning() const;

  /// A call: a stream that really records from the speakerphone; returns once sound arrives.
  std::unique_ptr<RecordingStream> record();
  /// A volume meter as mixers show it, which is no call.
  std::unique_ptr<RecordingStream> meter();
  /// A recording stream that is paused from the start: no call until uncork().
  std::unique_ptr<RecordingStream> corkedRecord();

  /// What happened to the speakerphone's volume, as a client of its own sees it.
  VolumeObserver& observer() { return observer_; }

 private:
  struct Plugged {
    std::string source;
    std::string name;
    uint32_t module;
  };

  void start();
  void startPulseAudio();
  void startPipeWire();
  void load(Plugged& plugged);
  SourceState speakerphone() const;
  std::unique_ptr<RecordingStream> stream(RecordingStream::Kind kind);

  const Session& session_;
  AudioFlavour flavour_;
  std::string address_;
  std::vector<std::unique_ptr<ServerProcess>> processes_;
  std::shared_ptr<AudioClient> client_;
  VolumeObserver observer_;
  std::vector<Plugged> plugged_;
};

}  // namespace hushbox::rehearsal
