#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "coordinator/MuteCoordinator.h"
#include "platform/Platform.h"
#include "platform/linux/AtspiAccessibilityTree.h"
#include "platform/linux/AutostartLoginItem.h"
#include "platform/linux/DesktopNotifications.h"
#include "platform/linux/GLibMainLoop.h"
#include "platform/linux/PulseAudioHardware.h"
#include "platform/linux/SessionLocale.h"
#include "platform/linux/SpawnedChildProcesses.h"
#include "platform/linux/StatusNotifierMenuBar.h"
#include "rehearsal/Desk.h"
#include "tests/linux/KeptLog.h"

namespace hushbox {

/// The program in this process: every Linux adapter, and the coordinator on them.
struct ProgramOnDesk {
  ProgramOnDesk();
  ~ProgramOnDesk();

  /// Waits until the status line ends in `message`, the words without the time before them.
  void waitForNote(const std::string& message) const;

  GLibMainLoop mainLoop;
  KeptLog log;
  PulseAudioHardware audio;
  AtspiAccessibilityTree accessibility;
  SpawnedChildProcesses childProcesses{ChildProcessRules{}};
  DesktopNotifications notifications{mainLoop};
  AutostartLoginItem loginItem{AutostartLoginItem::sessionFolder(),
                               AutostartLoginItem::runningProgram()};
  StatusNotifierMenuBar menuBar{log};
  SessionLocale locale;
  PlatformScope scope{{mainLoop, audio, accessibility, accessibility.workspace(), childProcesses,
                       notifications, loginItem, menuBar, log, locale}};
  std::optional<MuteCoordinator> coordinator;
};

/// A call on real servers: one desk for the tests that want the same sound server, and on it, anew
/// for each test, the speakerphone, a meeting, a call and the program.
class CallFixture : public testing::Test {
 protected:
  static void TearDownTestSuite() { desk_.reset(); }

  void putUp(rehearsal::AudioFlavour flavour);
  void TearDown() override;

  rehearsal::Desk& desk() { return *desk_; }
  rehearsal::AudioServer& sound() { return desk_->audio(); }
  MuteCoordinator& coordinator() { return *program->coordinator; }

  /// The next test gets a desk of its own: this one has been damaged.
  static void abandonDesk() { damaged_ = true; }

  std::optional<rehearsal::MeetingPage> meeting;
  std::unique_ptr<rehearsal::RecordingStream> call;
  std::optional<ProgramOnDesk> program;

 private:
  static inline std::unique_ptr<rehearsal::Desk> desk_;
  static inline std::optional<rehearsal::AudioFlavour> flavour_;
  static inline bool damaged_ = false;
};

}  // namespace hushbox
