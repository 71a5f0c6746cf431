#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "rehearsal/Desk.h"
#include "rehearsal/HushboxProcess.h"
#include "rehearsal/Panel.h"
#include "rehearsal/PowerDaemon.h"

namespace hushbox::rehearsal {

/// What the rehearsal plays: a desk of real servers with Hushbox on it, and each thing that a
/// person, a speakerphone or Teams does there.
///
/// Making it puts up the desk. Every member does one thing and returns what was read back; it
/// throws DeskError when that is not what should have come of it.
class RehearsedCall {
 public:
  /// Plays with the Hushbox of that path, nobody's settings touched.
  explicit RehearsedCall(std::string program);

  std::string startHushbox();
  std::string findItem();
  std::string plugIn();
  std::string openMeeting();
  std::string startCall();

  /// The device's button: it drives its own volume to zero, or back.
  std::string pressButton(double volume, bool muted);
  /// The same, and the calling host puts the volume straight back.
  std::string pressAndBounce(bool muted);
  std::string clickInTeams(double volume);

  std::string hangUp();
  std::string runDownBattery();
  std::string startCallOnLowBattery();

  std::string openMenu();
  std::string switchLaunchAtLogin(bool on);

  std::string unplug();
  std::string quit();

  /// What Hushbox has logged, for when a step has failed.
  std::string log() const { return hushbox_ ? hushbox_->log() : std::string(); }

 private:
  std::string timed(const std::function<void()>& press, bool muted);
  void waitForToolTip(const std::string& text) const;

  const std::string program_;
  Desk desk_;
  Panel panel_;
  PowerDaemon power_;
  std::optional<HushboxProcess> hushbox_;
  std::optional<MeetingPage> meeting_;
  std::unique_ptr<RecordingStream> stream_;
};

}  // namespace hushbox::rehearsal
