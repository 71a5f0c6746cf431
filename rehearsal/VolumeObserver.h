#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "rehearsal/AudioClient.h"
#include "rehearsal/VolumeChange.h"

namespace hushbox::rehearsal {

/// Records the history of a source's volume over a separate connection to the sound server.
///
/// A change is recorded when its value is known, one round trip after the server's event. Events
/// that change neither volume nor mute switch are not recorded. All members are callable on any
/// thread.
class VolumeObserver {
 public:
  explicit VolumeObserver(std::string source) : source_(std::move(source)) {}

  /// Connects, replacing an earlier connection. The history is kept. Throws DeskError on failure.
  void connect(const std::string& server);
  void disconnect();

  std::vector<VolumeChange> history() const;
  void clear();

  /// Calls `callback` on the observer's own thread with each change; an empty function removes it.
  /// The callback must not call the observer: its lock is held.
  void onVolumeChanged(std::function<void(const VolumeChange&)> callback);

  /// Waits until the history contains a change to that volume and returns the first one. Throws
  /// DeskError at the deadline.
  VolumeChange waitForVolume(double volume, Milliseconds deadline = serverTimeout) const;

 private:
  void record(const SourceState& state);

  std::string source_;
  mutable std::mutex mutex_;
  std::vector<VolumeChange> history_;
  std::optional<SourceState> last_;
  std::function<void(const VolumeChange&)> callback_;
  std::unique_ptr<AudioClient> client_;
};

}  // namespace hushbox::rehearsal
