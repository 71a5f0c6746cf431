#pragma once

#include <cstddef>
#include <string>

#include "platform/AccessibilityTree.h"
#include "platform/Workspace.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives an accessibility tree and a workspace, and one application that can open a meeting
/// window. Its changes may show in the tree only later, while the loop runs.
class AccessibilityDriver : public ContractDriver {
 public:
  virtual AccessibilityTree& tree() = 0;
  virtual Workspace& workspace() = 0;
  /// The time on the clock that the tree's timeouts use.
  virtual Instant now() = 0;

  /// Starts an application that the workspace lists as "com.microsoft.teams2" and opens its meeting
  /// window. The microphone button is labelled like "Mute mic (Ctrl+Shift+M)", or "Unmute mic ..."
  /// while muted, has the DOM identifier "microphone-button", and changes its label when pressed.
  /// Called at most once per case.
  virtual void openMeeting(bool muted) = 0;
  /// Removes the microphone button; the application keeps running.
  virtual void leaveMeeting() = 0;
  /// Ends the application.
  virtual void quit() = 0;

  /// Whether the meeting is muted and how often its button was pressed, from the application itself
  /// rather than from the tree.
  virtual bool isMuted() = 0;
  virtual std::size_t pressCount() = 0;
  /// The user mutes or unmutes with the mouse.
  virtual void setMuted(bool muted) = 0;

  /// Makes the button change its label only this long after each press. Returns false where the
  /// platform under test cannot do that. Call it before openMeeting().
  virtual bool delayLabel(TimeInterval) { return false; }

  /// How long a press waits for the label to change. By default the messaging timeout of the
  /// contract.
  virtual TimeInterval maxPressWait() { return TimeInterval(1); }

  /// Suspends and resumes the application.
  virtual void freeze() = 0;
  virtual void thaw() = 0;
};

}  // namespace hushbox
