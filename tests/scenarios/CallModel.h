#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/scenarios/CallEvent.h"
#include "tests/scenarios/CallState.h"

namespace hushbox {

/// The rules of the headset, the coordinator and the poll, written down a second time: as plainly
/// as possible, without regard to speed, and sharing no code with the program. It also models the
/// device and Teams, as far as the rules depend on them.
///
/// The program must be in the same state as this model after every event. Times are in nanoseconds.
/// What is due at the same time runs in the order in which it was scheduled, as on the simulated
/// main loop.
class CallModel {
 public:
  /// The figures in the rules. A test that changes one must find that the program differs.
  struct Rules {
    /// How long a drop to zero must last to be a mute.
    std::int64_t bounceWindow = 300'000'000;
    /// For how long after a write of its own the program ignores changes of the volume.
    std::int64_t echoWindow = 500'000'000;
    std::int64_t pollInterval = 1'000'000'000;
    /// How long the poll pauses after it could not read Teams.
    std::int64_t searchPause = 5'000'000'000;
    /// What unmuting writes if no volume above zero was ever seen.
    float firstRestoreVolume = 0.6F;
  };

  /// With `lastScheduledFirst`, what is due at the same time runs in the reverse order.
  explicit CallModel(const Rules& rules, bool lastScheduledFirst = false);

  void apply(const CallEvent& event);

  /// Returns the state now. Clears the records.
  CallState takeState();

  /// Appends everything on which the future depends and which `CallState` does not show, with times
  /// relative to now.
  void appendHiddenState(std::string& to) const;

 private:
  struct Device {
    unsigned id = 0;
    float volume = 0;
    bool inUse = false;
  };

  /// Something that is due at some time.
  struct Due {
    enum class What {
      deviceListChanged,
      volumeChanged,
      useChanged,
      pendingMute,
      poll,
      batteryTimer,
      batteryReading,
      volumeRestored,
      labelChanged
    };
    std::int64_t time = 0;
    std::uint64_t number = 0;
    What what = What::poll;
    /// Of `volumeRestored`.
    unsigned device = 0;
    float volume = 0;
  };

  // The surroundings.
  void pass(std::int64_t duration);
  void run(const Due& due);
  bool runsBefore(const Due& a, const Due& b) const;
  std::uint64_t schedule(std::int64_t delay, Due::What what, unsigned device = 0, float volume = 0);
  void repeat(const Due& fired, std::int64_t interval);
  void changeVolume(float volume);
  void changeUse(bool inUse);
  void plug(float volume);
  void unplug();
  void join(bool muted);
  bool isListening() const;
  std::optional<float> readVolume() const;
  bool readUse() const;

  // The headset.
  void deviceListChanged();
  void volumeChanged();
  void useChanged();
  void pendingMuteIsDue(std::uint64_t number);
  void muteHeadset(bool muted);

  // The coordinator and the poll.
  void buttonPressed(const char* verb, std::optional<bool> wanted);
  std::string pressTeams(std::optional<bool> wanted);
  std::optional<bool> readTeams() const;
  void poll();
  void note(const std::string& message);
  void announce() { ++announcements_; }
  void record(const std::string& text) { records_.push_back(text); }

  const Rules rules_;
  const bool lastScheduledFirst_;
  std::int64_t now_ = 0;
  std::uint64_t nextNumber_ = 0;
  std::vector<Due> due_;

  std::optional<Device> device_;
  unsigned nextDevice_ = 2;
  bool volumeReadable_ = true;
  bool volumeWritable_ = true;
  bool useReadable_ = true;
  std::int64_t announceDelay_ = 0;
  std::int64_t restoreDelay_ = -1;

  bool teamsRuns_ = false;
  bool inMeeting_ = false;
  bool mutedInTeams_ = false;
  bool trusted_ = true;
  bool pressable_ = true;
  std::int64_t pressDelay_ = 0;
  std::size_t presses_ = 0;

  std::optional<unsigned> attached_;
  std::optional<bool> headsetMuted_;
  bool inCall_ = false;
  float restoreVolume_;
  std::optional<std::int64_t> lastWrite_;
  /// The number of the pending mute.
  std::optional<std::uint64_t> pendingMute_;

  std::optional<bool> teamsMuted_;
  std::int64_t nextSearch_ = 0;
  std::string status_ = "Waiting for Jabra button…";
  std::size_t announcements_ = 0;
  std::vector<std::string> records_;
};

}  // namespace hushbox
