#pragma once

#include "platform/MainLoop.h"

namespace hushbox {

/// The application's main run loop with its main queue, and the global queue of utility quality of
/// service.
///
/// Timers run in the common modes, so that an open menu does not stop them. Timers and queues are
/// the system's and go on after this object's end. While the machine sleeps nothing runs, but time
/// passes for `now()`.
class RunLoopMainLoop final : public MainLoop {
 public:
  Instant now() const override;
  bool isMainThread() const override;
  RegistrationToken scheduleRepeating(TimeInterval interval, std::function<void()> block) override;
  void mainAsyncAfter(TimeInterval delay, const WorkItem& item) override;
  void mainAsync(std::function<void()> block) override;
  void utilityAsync(std::function<void()> block) override;

  /// Runs the shared application. Once it terminates, the application ends the process by itself,
  /// with status 0: on a Mac this does not return.
  int run() override;

  /// The application is asked in the next turn of the loop.
  void terminate() override;
};

}  // namespace hushbox
