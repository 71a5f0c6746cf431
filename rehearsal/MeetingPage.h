#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "rehearsal/Browser.h"

namespace hushbox::rehearsal {

/// A page like a Teams meeting: a microphone button whose label changes with each press, among
/// other buttons and a decoy.
class MeetingPage {
 public:
  enum class Control { Button, CheckBox, ToggleButton };

  struct Options {
    WindowKind window = WindowKind::Window;
    bool muted = false;
    int extraElements = 0;      ///< How many elements to add to the accessibility tree.
    bool controlsLast = false;  ///< The buttons come after all other elements.
    Control microphone = Control::Button;
    Milliseconds labelDelay{0};  ///< Delay between a press and the change of the label.
    bool stuck = false;          ///< Presses change nothing.
    bool mediaPlayers = false;   ///< A video and a sound with native controls come first.
    std::string title = "Weekly sync | Microsoft Teams";
  };

  static constexpr const char* labelWhenLive = "Mute mic (Ctrl+Shift+M)";
  static constexpr const char* labelWhenMuted = "Unmute mic (Ctrl+Shift+M)";

  /// Opens the page and waits until it has loaded.
  explicit MeetingPage(Browser& browser) : MeetingPage(browser, Options{}) {}
  MeetingPage(Browser& browser, const Options& options);

  /// Whether the microphone is muted, read from the page itself: true even while the accessibility
  /// tree is out of date.
  bool isMuted();
  /// The button's aria-label.
  std::string label();

  /// Clicks the microphone button with the mouse, as a user would.
  void clickMicrophone();
  /// Clicks it by script; also works while the page is hidden.
  void pressMicrophone();
  /// Removes the microphone button, as at the end of a call, and adds it again.
  void leaveCall();
  void joinCall();

  /// Records from the speakerphone, as in a call, until stopRecording() or the page is closed.
  /// Returns when the browser has opened the device, which it may take a while to find.
  void record();
  void stopRecording();

  /// When each press of the microphone button arrived in the page, oldest first, to about 0.1 ms.
  std::vector<std::chrono::system_clock::time_point> presses();
  /// Waits until at least `count` presses have arrived.
  void waitForPresses(std::size_t count, Milliseconds deadline = serverTimeout);
  void waitForLabel(const std::string& label, Milliseconds deadline = serverTimeout);
  void waitForMuted(bool muted, Milliseconds deadline = serverTimeout);

  /// The page and its window, to minimise, restore, cover or close.
  BrowserPage& page() { return *page_; }
  void close() { page_->close(); }

 private:
  std::unique_ptr<BrowserPage> page_;
};

}  // namespace hushbox::rehearsal
