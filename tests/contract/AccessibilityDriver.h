#pragma once

#include <cstddef>
#include <string>

#include "platform/AccessibilityTree.h"
#include "platform/Workspace.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives an accessibility tree and a workspace, with one application beside them that can put up
/// a meeting window. What it does may show in the tree only while the loop runs, and later.
class AccessibilityDriver : public ContractDriver {
 public:
  virtual AccessibilityTree& tree() = 0;
  virtual Workspace& workspace() = 0;
  /// The clock that the tree's calls take their time on.
  virtual Instant now() = 0;

  /// Puts up the meeting window of an application that the workspace lists as
  /// "com.microsoft.teams2". Its microphone button is labelled like "Mute mic (Ctrl+Shift+M)", or
  /// "Unmute mic ..." while muted, has the identifier "microphone-button" in its document, and
  /// changes its label when it is pressed. At most once a case.
  virtual void putUpMeeting(bool muted) = 0;
  /// Takes the microphone button off the screen; the application goes on.
  virtual void leaveMeeting() = 0;
  /// Ends the application.
  virtual void quit() = 0;

  /// The truth, whatever the tree says: whether the meeting is muted, and how often its button was
  /// pressed.
  virtual bool isMuted() = 0;
  virtual std::size_t pressCount() = 0;
  /// The user mutes or unmutes with the mouse.
  virtual void setMuted(bool muted) = 0;

  /// Stops the application in its tracks, and lets it go on.
  virtual void freeze() = 0;
  virtual void thaw() = 0;
};

}  // namespace hushbox
