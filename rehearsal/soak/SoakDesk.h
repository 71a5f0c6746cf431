#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "rehearsal/BusConnection.h"
#include "rehearsal/Desk.h"
#include "rehearsal/HushboxProcess.h"
#include "rehearsal/ProcessFigures.h"
#include "rehearsal/ProcessorWait.h"
#include "rehearsal/soak/SoakState.h"

namespace hushbox::rehearsal {

/// The desk of a soak: real servers, two browsers, a meeting in the first, and Hushbox. What a
/// person, the speakerphone and other programs do there, each as one call. Throws DeskError if an
/// action fails.
class SoakDesk {
 public:
  /// Starts everything. The speakerphone is not plugged in yet, and there is no call.
  SoakDesk(AudioFlavour flavour, const std::string& program);

  SoakState see();
  ProcessFigures figures() const { return ProcessFigures::of(hushbox_.pid()); }
  std::string log() const { return hushbox_.log(); }

  /// Plugs the speakerphone in, at full volume, or as hardware that the session manager restores.
  void plugIn(bool isRestored);
  void unplug();
  void startCall() { call_ = desk_.audio().record(); }
  void endCall() { call_.reset(); }
  /// Crashes the sound server, with the call. It stays down.
  void killSoundServer();
  void startSoundServer();

  /// The button moves the mute switch or the level between 0 and `level` percent.
  void pressButton(bool movesSwitch, long level);
  /// What one drop of the level was like.
  struct Drop {
    /// From before the level dropped until it was restored for certain.
    std::chrono::nanoseconds maxSpan;
    /// How long a thread of Hushbox or of the sound server waited for a processor meanwhile.
    std::chrono::nanoseconds waited;
  };
  Drop bounce(long level, Milliseconds span);
  void setLevel(long level) { desk_.audio().setVolume(static_cast<double>(level) / 100); }
  void clickInTeams() { meeting_.pressMicrophone(); }

  /// Minimises the meeting's window: the browser lets it rest.
  void setMinimised(bool isMinimised);
  bool isMinimised() const { return isMinimised_; }
  void freezeBrowser() { desk_.browser().freeze(); }
  void thawBrowser() { desk_.browser().thaw(); }
  void setMeter(bool isOpen);
  bool hasMeter() const { return meter_ != nullptr; }

  /// Records in the meeting's page, opens another meeting in the other browser, and hides the
  /// first. Returns false and opens nothing if the browser does not record.
  bool openSecondMeeting();
  /// Closes it again. Throws DeskError if it was pressed meanwhile.
  void closeSecondMeeting();
  /// Opens a page that has the title of a meeting and a mute button, but no address of Teams.
  void openForeignPage();
  /// Closes it again. Throws DeskError if it was pressed meanwhile.
  void closeForeignPage();

 private:
  std::string firstRow() const;

  Desk desk_;
  Browser otherBrowser_;
  MeetingPage meeting_;
  HushboxProcess hushbox_;
  BusConnection bus_;
  std::unique_ptr<RecordingStream> call_;
  std::unique_ptr<RecordingStream> meter_;
  std::optional<MeetingPage> secondMeeting_;
  std::unique_ptr<BrowserPage> foreignPage_;
  bool isMinimised_ = false;
};

}  // namespace hushbox::rehearsal
