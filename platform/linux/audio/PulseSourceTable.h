#pragma once

#include <pulse/introspect.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/audio/AudioProperty.h"

namespace hushbox {

/// The last reported state of the sound server's input sources and of the streams that record from
/// them. Each update returns the properties that it changed. Makes no requests. Main thread only.
///
/// Monitors of sinks are not input devices and are left out. A source gets its identifier when it
/// is first reported and keeps it until it is removed. A source that comes back, or another name
/// under the same index, is another device with a new identifier.
class PulseSourceTable {
 public:
  struct Source {
    AudioObjectID id;
    std::uint32_t index;
    /// The server's unique name for the source; not shown to the user.
    std::string key;
    /// The name that the user sees, well-formed UTF-8.
    std::string name;
    pa_cvolume volume;
    /// The last volume that was not silent. Unmuting restores the channels' balance from it.
    pa_cvolume audibleVolume;
    bool muteSwitch;
    bool running;
    /// The input volume that we last asked the server for, until it reports a change of the volume
    /// or of the mute switch.
    std::optional<float> unconfirmedLevel;

    /// The loudest channel as a fraction of 100 % on the server's own (cubic) scale, at most 1. It
    /// is exactly 0 if and only if the source is silent: its mute switch is on or every channel is
    /// at 0.
    float inputVolume() const;

    /// The channel volumes for that input volume, in their present balance, or in the last audible
    /// one if they are silent now. Only level 0 results in silence.
    pa_cvolume volumeFor(float level) const;
  };

  using Changes = std::vector<AudioProperty>;

  /// In the order in which the server reported them.
  const std::vector<Source>& sources() const { return sources_; }
  const Source* find(AudioObjectID id) const;

  Changes setSource(const pa_source_info& info);
  Changes removeSource(std::uint32_t index);

  /// A source is running while a stream records from it. Paused streams and the level meters of
  /// mixers don't count.
  Changes setStream(const pa_source_output_info& info);
  Changes removeStream(std::uint32_t index);

  /// Keeps `level` as the source's unconfirmed level. Does nothing without that source.
  void setUnconfirmedLevel(AudioObjectID id, float level);

  /// Returns the unconfirmed level of the source and forgets it; nullopt if there is none.
  std::optional<float> takeUnconfirmedLevel(AudioObjectID id);

  /// Removes everything, after the connection was lost.
  Changes clear();

 private:
  Source* findSource(AudioObjectID id);
  bool hasStream(std::uint32_t sourceIndex) const;
  Changes updateRunning();
  void add(const pa_source_info& info);
  static Changes update(Source& source, const pa_source_info& info);

  std::vector<Source> sources_;
  /// The index of the source that each stream records from, by stream index. Holds only the streams
  /// that count as recording.
  std::map<std::uint32_t, std::uint32_t> streams_;
};

}  // namespace hushbox
