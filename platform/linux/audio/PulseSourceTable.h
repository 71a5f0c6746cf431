#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/audio/AudioProperty.h"
#include "platform/linux/audio/PulseReport.h"
#include "platform/linux/audio/PulseWrite.h"

namespace hushbox {

/// The last reported state of the sound server's input sources and of the streams that record from
/// them, and what a write to a source has to change. Each report returns the properties that it
/// changed. Makes no requests itself. Main thread only.
///
/// Monitors of sinks are not input devices and are left out. A source gets its identifier when it
/// is first reported and keeps it until it is removed. A source that comes back, or another name
/// under the same index, is another device with a new identifier.
///
/// A source is silent while its mute switch is on or its level is 0, and a button may move either.
/// A write of 0 silences the source in the way in which another program or the device did last, so
/// that the next press of the button undoes it; at first that is the level. If the button moves the
/// other of the two afterwards, the source would stay silent: then a follow-up makes it audible, as
/// the press would have done otherwise. That also holds if the source was removed meanwhile and a
/// session manager has restored our silence.
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
    /// The last volume that was not silent. Unmuting restores the channels' balance from it, and a
    /// level above 100 %.
    pa_cvolume audibleVolume;
    bool muteSwitch;
    bool isHardware;
    bool running;

    /// The loudest channel as a fraction of 100 % on the server's own (cubic) scale, at most 1. It
    /// is exactly 0 if and only if the source is silent: its mute switch is on or every channel is
    /// at 0.
    float inputVolume() const;

    /// The channel volumes for that input volume, in their present balance, or in the last audible
    /// one if they are silent now. Levels above 100 % are read as 1, so 1 keeps such a level. Only
    /// level 0 results in silence.
    pa_cvolume volumeFor(float level) const;

   private:
    friend class PulseSourceTable;
    enum class OwnMute { none, requested, inEffect };

    bool isSilent() const;

    OwnMute ownMute = OwnMute::none;
    /// Whether the switch, not the level, was last moved to mute or unmute.
    bool isMutedBySwitch = false;
    /// Whether a volume that was restored at once is being reported as 0.
    bool hasBounced = false;
    /// The input volume that we last requested, until the server reports a change of the volume or
    /// of the mute switch.
    std::optional<float> unconfirmedLevel;
  };

  using Changes = std::vector<AudioProperty>;

  /// Hardware first, then filters and other virtual sources, each in the order of the reports: a
  /// filter may carry the name of the device that it filters.
  const std::vector<Source>& sources() const { return sources_; }
  const Source* find(AudioObjectID id) const;

  Changes setSource(const PulseSourceReport& report);
  Changes removeSource(std::uint32_t index);

  /// The source's volume dropped to 0 and was restored: it is read as 0 until the next report.
  Changes setBounced(std::uint32_t index);

  /// A source is running while a stream records from it. Paused streams and the level meters of
  /// mixers don't count.
  Changes setStream(const PulseStreamReport& report);
  Changes removeStream(std::uint32_t index);

  /// The processes whose streams record from the source, without duplicates. Streams that name no
  /// process are left out.
  std::set<std::int32_t> recordingProcesses(AudioObjectID id) const;

  /// Removes everything, after the connection was lost.
  Changes clear();

  /// Returns the request that sets the input volume of an existing source. 0 mutes; any other level
  /// also clears the mute switch.
  PulseWrite write(AudioObjectID id, float level);

  /// Returns the requests that the reports so far led to, and forgets them.
  ///
  /// Beside the follow-ups above there are repetitions: the server may not act on a write while
  /// nothing records (PipeWire 1.4 with virtual sources). If a running source is reported unchanged
  /// since our last write, the write is repeated once.
  std::vector<PulseWrite> takeFollowUps();

 private:
  struct Stream {
    std::uint32_t sourceIndex;
    std::int32_t process;
  };

  /// What a write of ours left behind at a source that was removed while it was silent.
  struct LeftMute {
    pa_cvolume audibleVolume;
    bool isMutedBySwitch;
  };

  Source* findMutable(AudioObjectID id);
  bool hasStream(std::uint32_t sourceIndex) const;
  Changes updateRunning();
  void add(const PulseSourceReport& report);
  /// Remembers our mute of a source that is about to be removed.
  void leave(const Source& source);
  Changes update(Source& source, const PulseSourceReport& report);
  void noteMute(Source& source, bool wasSilent, bool switchMoved);

  std::vector<Source> sources_;
  /// By stream index. Holds only the streams that count as recording.
  std::map<std::uint32_t, Stream> streams_;
  std::vector<PulseWrite> followUps_;
  /// By the source's key.
  std::map<std::string, LeftMute> leftMutes_;
};

}  // namespace hushbox
