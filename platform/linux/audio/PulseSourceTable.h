#pragma once

#include <pulse/introspect.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/linux/audio/AudioProperty.h"

namespace hushbox {

/// What the sound server last said about its input sources and the streams that record from them.
///
/// It is told each fact as it comes and answers which properties changed by it; it asks nobody
/// anything. Main thread only.
///
/// A source that is the monitor of a sink is no input device and is left out. A source gets its
/// identifier when it is first told and keeps it until it is removed; one that comes back, or
/// another name under the same index, is another device with another identifier.
class PulseSourceTable {
 public:
  struct Source {
    AudioObjectID id;
    std::uint32_t index;
    /// The server's name for it, which tells sources apart; not for people.
    std::string key;
    /// The name that the user knows it by, well-formed UTF-8.
    std::string name;
    pa_cvolume volume;
    /// The last volume that was not silent: what the channels' balance is restored from.
    pa_cvolume audibleVolume;
    bool muteSwitch;
    bool running;

    /// The loudest channel as a fraction of full volume (the server's scale, not decibels), at most
    /// 1; exactly 0 when, and only when, nothing comes through: the mute switch is on or every
    /// channel is at the bottom.
    float inputVolume() const;

    /// The channel volumes for that input volume: in their present balance, or the last one heard
    /// when they are silent. Only 0 gives silence.
    pa_cvolume volumeFor(float level) const;
  };

  using Changes = std::vector<AudioProperty>;

  /// In the order in which the server told of them.
  const std::vector<Source>& sources() const { return sources_; }
  const Source* find(AudioObjectID id) const;

  Changes setSource(const pa_source_info& info);
  Changes removeSource(std::uint32_t index);

  /// A source is running while a stream takes sound from it. Paused streams do not count, nor do
  /// the level meters that mixers show.
  Changes setStream(const pa_source_output_info& info);
  Changes removeStream(std::uint32_t index);

  /// Forgets everything: the server is gone.
  Changes clear();

 private:
  bool hasStream(std::uint32_t sourceIndex) const;
  Changes updateRunning();
  void add(const pa_source_info& info);
  static Changes update(Source& source, const pa_source_info& info);

  std::vector<Source> sources_;
  /// By stream index, the index of the source that it records from; only streams that count.
  std::map<std::uint32_t, std::uint32_t> streams_;
};

}  // namespace hushbox
