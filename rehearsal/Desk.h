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

/// A whole private desk of real servers on one machine: the demo, the integration tests and the
/// benchmarks stand on it.
///
/// What is on it:
/// - Session: scratch folder, home and runtime folders, session bus, on wish Display (Xvfb with
///   openbox) and a system bus; environment() for children, applyToThisProcess() for adapters in
///   this process.
/// - AccessibilityBus: the real at-spi2, switched on before the browser starts.
/// - AudioServer: PulseAudio or PipeWire, a speakerphone to plug in, press, record from; decoys.
/// - Browser, BrowserPage, MeetingPage: a real Chromium driven over a pipe, the meeting window.
/// - NotificationDaemon (dunst), NotificationMonitor, SilentNotificationDaemon.
/// - Made apart, in its session: Panel (xfce4-panel's tray), PowerDaemon (UPower with a battery).
///
/// How to use it in a test, one desk for a whole suite (it is up in one to three seconds):
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
/// Everything that waits iterates GLib's default main context, so adapters on it keep working.
/// Whatever goes wrong is a DeskError with a sentence. Make it on the main thread, before threads
/// that read the environment. One Desk at a time per process; many may run side by side in
/// processes of their own. Nothing outlives it: neither process nor file.
class Desk {
 public:
  struct Options {
    bool display = false;         ///< Xvfb; the browser then has real windows unless headless.
    bool headlessBrowser = true;  ///< Ignored without a display: then it always is.
    bool accessibility = true;
    std::optional<AudioFlavour> audio = AudioFlavour::PulseAudio;
    bool speakerphone = false;  ///< Plugged in from the start.
    bool browser = true;
    bool notifications = false;  ///< dunst; needs the display. The monitor is always there.
    bool systemBus = false;
    bool applyToThisProcess = true;
  };

  Desk() : Desk(Options{}) {}
  explicit Desk(const Options& options);
  ~Desk();
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  Session& session() { return session_; }
  /// The others throw DeskError when the options left them out.
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
