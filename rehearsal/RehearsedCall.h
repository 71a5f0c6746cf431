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

/// The steps of the rehearsal: Hushbox on a desk of real servers, and what a person, the
/// speakerphone and Teams do there.
///
/// Each step waits for its effect and returns a line that says what was read back from the browser,
/// the sound server, the notification daemon, the panel or Hushbox's log. It throws DeskError if
/// the effect is not the expected one or does not come in time. Call on the main thread.
class RehearsedCall {
 public:
  /// Sets up the desk; `program` is the path of the Hushbox to rehearse with. Changes no settings
  /// outside the desk's own home folder.
  explicit RehearsedCall(std::string program);

  std::string startHushbox();
  std::string findItem();
  std::string plugIn();
  std::string openMeeting();
  std::string startCall();

  /// Presses the device's mute button, which sets the device's volume to `volume` (0.0 or 1.0),
  /// and waits until Teams is muted or live accordingly.
  std::string pressButton(double volume, bool muted);
  /// Sets the volume to 0.0 and back to 1.0 after 0.1 s: a press while the calling program resets
  /// the volume.
  std::string pressAndBounce(bool muted);
  /// Clicks the microphone button in Teams and waits until the speakerphone's volume is `volume`.
  std::string clickInTeams(double volume);

  std::string hangUp();
  std::string drainBattery();
  std::string startCallOnLowBattery();

  std::string openMenu();
  std::string switchLaunchAtLogin(bool on);

  std::string unplug();
  std::string quit();

  /// Hushbox's log so far, to print after a failed step; empty before startHushbox().
  std::string log() const { return hushbox_ ? hushbox_->log() : std::string(); }

 private:
  /// Runs `press`, waits for its effect in Teams and reports how long it took.
  std::string timePress(const std::function<void()>& press, bool muted);
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
