#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "rehearsal/AudioClient.h"
#include "rehearsal/VolumeChange.h"

namespace hushbox::rehearsal {

/// Keeps the history of a source's volume, with a connection of its own to the sound server.
///
/// A change is entered when its value is known, one round trip after the server's event. Events
/// that leave volume and switch as they were are not entered. All members are callable on any
/// thread.
class VolumeObserver {
 public:
  explicit VolumeObserver(std::string source) : source_(std::move(source)) {}

  /// Begins anew with another server; the history stays.
  void connect(const std::string& server);
  void disconnect();

  std::vector<VolumeChange> history() const;
  void clear();

  /// Calls back on the observer's own thread with each change; an empty function ends it. The
  /// callback must not call into the observer.
  void onVolumeChanged(std::function<void(const VolumeChange&)> callback);

  /// Waits until a change to that volume (and switch position) is in the history, and returns it.
  /// Throws DeskError when the deadline passes first.
  VolumeChange waitForVolume(double volume, Milliseconds deadline = patience) const;

 private:
  void enter(const SourceState& state);

  std::string source_;
  mutable std::mutex mutex_;
  std::vector<VolumeChange> history_;
  std::optional<SourceState> last_;
  std::function<void(const VolumeChange&)> callback_;
  std::unique_ptr<AudioClient> client_;
};

}  // namespace hushbox::rehearsal
