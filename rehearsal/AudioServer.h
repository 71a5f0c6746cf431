#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "rehearsal/AudioClient.h"
#include "rehearsal/AudioFlavour.h"
#include "rehearsal/RecordingStream.h"
#include "rehearsal/Session.h"
#include "rehearsal/VolumeObserver.h"

namespace hushbox::rehearsal {

/// A real sound server at the session's PULSE_SERVER, with a virtual speakerphone to plug in.
///
/// Two decoys are always present: another microphone, and a loudspeaker with the speakerphone's
/// name, whose "Monitor of ..." source therefore contains the name too. Volumes are fractions of
/// full volume (1.0 is 100 %) on the server's own scale. Each call blocks until the server has
/// confirmed it, usually for less than a millisecond, and throws DeskError if the server has
/// exited, refuses, or sends no reply within 10 s. Use it on one thread.
class AudioServer {
 public:
  /// The speakerphone's source name: bus, maker and model, like a real device's.
  static constexpr const char* speakerphoneSource = "alsa_input.usb-Jabra_Speak2_75";
  static constexpr const char* speakerphoneName = "Jabra Speak2 75";
  static constexpr const char* decoySource = "alsa_input.pci-builtin_microphone";

  /// Starts the server and plugs in the decoys, but not the speakerphone.
  explicit AudioServer(const Session& session, AudioFlavour flavour = AudioFlavour::PulseAudio);
  ~AudioServer();

  AudioFlavour flavour() const { return flavour_; }
  bool isRunning() const;
  /// The processes that serve.
  std::vector<pid_t> processes() const;

  /// Kills the server with SIGKILL, like a crash. Streams and clients lose their connection.
  void kill();
  /// Kills the server if it runs and starts it again at the same address. Plugged-in devices are
  /// present again, at full volume, as hardware would be. Indices start from 0 again.
  void restart();
  /// Suspends the server's processes: it sends no reply until thaw().
  void freeze();
  void thaw();

  /// Plugs the speakerphone in, at full volume, and waits until a client sees it.
  void plugSpeakerphone(const std::string& name = speakerphoneName);
  /// Plugs the speakerphone in again, unplugged before, as hardware would be: a session manager may
  /// restore the volume and the mute switch that it was left at, a moment later.
  void replugSpeakerphone();
  void unplugSpeakerphone();
  bool hasSpeakerphone() const;
  /// Plugs in another microphone, for example a second headset.
  void plug(const std::string& source, const std::string& name);
  void unplug(const std::string& source);

  /// Makes writes to a virtual source take effect at once. plug() does this; call it for a source
  /// that a test has loaded itself. PipeWire 1.4 does not report a write to such a source until a
  /// stream has run on it, so this runs a meter on it briefly. The effect lasts, even after the
  /// server has suspended the source. Does nothing on PulseAudio, which needs none of this.
  void makeWritable(const std::string& source);

  /// Does what the speakerphone's mute button does; 0.0 is muted. Writing the current value again
  /// causes no event.
  void setVolume(double volume);
  double volume() const;
  /// Sets the source's own mute switch. Some devices report a press of their button this way.
  void setMuteSwitch(bool muted);
  bool muteSwitch() const;
  /// Whether the server reports the speakerphone as running, for any reason, even a meter.
  bool isSpeakerphoneRunning() const;

  /// Starts a call: a stream that records from the speakerphone. Returns when sound arrives.
  std::unique_ptr<RecordingStream> record();
  /// Opens a volume meter, as mixers do. It is not a call.
  std::unique_ptr<RecordingStream> meter();
  /// Opens a recording stream that starts paused: it is not a call until uncork().
  std::unique_ptr<RecordingStream> corkedRecord();

  /// The history of the speakerphone's volume, from a separate connection to the server.
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
  /// Loads it again once if no sound arrives from it.
  void loadWritable(Plugged& plugged);
  void setToFullVolume(const std::string& source);
  SourceState speakerphone() const;
  std::unique_ptr<RecordingStream> stream(RecordingStream::Kind kind);

  const Session& session_;
  AudioFlavour flavour_;
  std::string address_;
  std::vector<std::unique_ptr<ServerProcess>> processes_;
  std::shared_ptr<AudioClient> client_;
  VolumeObserver observer_;
  std::vector<Plugged> plugged_;
  /// The state of each source when it was unplugged, by its name.
  std::map<std::string, SourceState> leftAt_;
};

}  // namespace hushbox::rehearsal
