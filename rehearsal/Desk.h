#pragma once

#include <memory>
#include <optional>
#include <string>

#include "rehearsal/AccessibilityBus.h"
#include "rehearsal/AudioServer.h"
#include "rehearsal/Browser.h"
#include "rehearsal/MeetingPage.h"
#include "rehearsal/NotificationDaemon.h"
#include "rehearsal/NotificationMonitor.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// A private desktop of real servers on one machine. The rehearsal, the integration tests and the
/// benchmarks use it.
///
/// Parts:
/// - Session: scratch folder, home and runtime folders, session bus; optionally a Display (Xvfb
/// with
///   openbox) and a system bus. environment() is for child processes, applyToThisProcess() for
///   adapters in this process.
/// - AccessibilityBus: the real at-spi2, enabled before the browser starts.
/// - AudioServer: PulseAudio or PipeWire with a speakerphone to plug in, press and record from, and
///   with decoy devices.
/// - Browser, BrowserPage, MeetingPage: a real Chromium, controlled over a pipe, and the meeting
///   window.
/// - NotificationDaemon (dunst) and NotificationMonitor.
///
/// Three more parts are created separately, in the desk's session: Panel (xfce4-panel's tray),
/// PowerDaemon (UPower with a battery) and SilentNotificationDaemon.
///
/// A test suite shares one desk, which takes one to three seconds to start:
///
///     static void SetUpTestSuite() { desk = std::make_unique<Desk>(); }
///     static void TearDownTestSuite() { desk.reset(); }
///     ...
///     desk->audio().plugSpeakerphone();
///     MeetingPage meeting(desk->browser());
///     auto call = desk->audio().record();
///     desk->audio().setVolume(0.0);
///     meeting.waitForMuted(true);
///
/// Everything that waits runs GLib's default main context, so adapters that use it keep working.
/// Every failure throws DeskError. Create the desk on the main thread, before any thread that reads
/// the environment. A process can have one Desk at a time; several processes can each have one.
/// Destroying the desk ends all its processes and removes all its files.
class Desk {
 public:
  struct Options {
    bool display = false;         ///< Start Xvfb; the browser can then have real windows.
    bool headlessBrowser = true;  ///< Ignored without a display: the browser is headless then.
    bool accessibility = true;
    std::optional<AudioFlavour> audio = AudioFlavour::PulseAudio;
    bool speakerphone = false;  ///< Plugged in from the start.
    bool browser = true;
    bool notifications = false;  ///< Start dunst; needs the display. The monitor always runs.
    bool systemBus = false;
    bool applyToThisProcess = true;
  };

  Desk() : Desk(Options{}) {}
  explicit Desk(const Options& options);
  ~Desk();
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  Session& session() { return session_; }
  /// The accessors below throw DeskError for a part that the options left out.
  AccessibilityBus& accessibility();
  AudioServer& audio();
  Browser& browser();
  NotificationDaemon& notificationDaemon();
  NotificationMonitor& notifications() { return notifications_; }
  Display& display() { return session_.display(); }

 private:
  Session session_;
  NotificationMonitor notifications_;
  std::unique_ptr<AccessibilityBus> accessibility_;
  std::unique_ptr<AudioServer> audio_;
  std::unique_ptr<NotificationDaemon> notificationDaemon_;
  std::unique_ptr<Browser> browser_;
};

}  // namespace hushbox::rehearsal
