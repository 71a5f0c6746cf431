#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "rehearsal/Browser.h"

namespace hushbox::rehearsal {

/// A meeting window as Teams shows it: a microphone button that changes its label with each press,
/// among other buttons and a decoy.
class MeetingPage {
 public:
  enum class Control { Button, CheckBox, ToggleButton };

  struct Options {
    WindowKind window = WindowKind::Window;
    bool muted = false;
    int extraElements = 0;  ///< So many more elements in the tree.
    Control microphone = Control::Button;
    Milliseconds labelDelay{0};  ///< How long after a press the label changes.
    bool stuck = false;          ///< Presses arrive but change nothing.
    std::string title = "Weekly sync | Microsoft Teams";
  };

  static constexpr const char* labelWhenLive = "Mute mic (Ctrl+Shift+M)";
  static constexpr const char* labelWhenMuted = "Unmute mic (Ctrl+Shift+M)";

  /// Opens it and waits until it is loaded.
  explicit MeetingPage(Browser& browser) : MeetingPage(browser, Options{}) {}
  MeetingPage(Browser& browser, const Options& options);

  /// Whether the meeting has the microphone muted: the truth, however stale the tree is.
  bool isMuted();
  /// The button's aria-label.
  std::string label();

  /// A real mouse click on the microphone button: what a user does in Teams.
  void clickMicrophone();
  /// The same press from within the page; works while it is hidden too.
  void pressMicrophone();
  /// Takes the microphone button out of the page, as at the end of a call, and puts it back.
  void leaveCall();
  void joinCall();

  /// When each press of the microphone button arrived in the page, oldest first, to about 0.1 ms.
  std::vector<std::chrono::system_clock::time_point> presses();
  /// Waits until at least so many presses have arrived.
  void waitForPresses(std::size_t count, Milliseconds deadline = patience);
  void waitForLabel(const std::string& label, Milliseconds deadline = patience);
  void waitForMuted(bool muted, Milliseconds deadline = patience);

  /// The window: minimise, restore, cover, close.
  BrowserPage& page() { return *page_; }
  void close() { page_->close(); }

 private:
  std::unique_ptr<BrowserPage> page_;
};

}  // namespace hushbox::rehearsal
