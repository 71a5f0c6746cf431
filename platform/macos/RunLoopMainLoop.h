#pragma once

#include "platform/MainLoop.h"

namespace hushbox {

/// The application's main run loop, its main queue, and the global queue of utility quality of
/// service.
///
/// Timers run in the common modes, so an open menu does not stop them. The system owns timers and
/// queues; they outlive this object. While the machine sleeps nothing runs, but `now()` advances.
class RunLoopMainLoop final : public MainLoop {
 public:
  Instant now() const override;
  bool isMainThread() const override;
  RegistrationToken scheduleRepeating(TimeInterval interval, std::function<void()> block) override;
  void mainAsyncAfter(TimeInterval delay, const WorkItem& item) override;
  void mainAsync(std::function<void()> block) override;
  void utilityAsync(std::function<void()> block) override;

  /// Opts out of App Nap, which delays timers and delayed blocks of background applications by up
  /// to ten seconds. The machine may still sleep.
  std::shared_ptr<void> beginActivity(const std::string& reason) override;

  /// Runs the shared application. When that terminates it exits the process with status 0, so on a
  /// Mac this does not return.
  int run() override;

  /// Terminates the application in the next turn of the loop.
  void terminate() override;
};

}  // namespace hushbox
