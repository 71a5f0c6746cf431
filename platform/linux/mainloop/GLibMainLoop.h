#pragma once

#include <glib.h>

#include <functional>
#include <thread>

#include "platform/MainLoop.h"
#include "platform/linux/mainloop/MainQueue.h"
#include "platform/linux/mainloop/TimerQueue.h"
#include "platform/linux/mainloop/UtilityQueue.h"

namespace hushbox {

/// The main loop on GLib's default main context, beside whatever other sources live there.
///
/// The thread that makes it is the main thread. Timers and delayed work count elapsed time, sleep
/// of the machine included, and never fire early. At its end every timer and every block that has
/// not run is destroyed, after `finishUtilityWork()`.
class GLibMainLoop final : public MainLoop {
 public:
  GLibMainLoop();
  ~GLibMainLoop() override;

  Instant now() const override;
  bool isMainThread() const override;
  RegistrationToken scheduleRepeating(TimeInterval interval, std::function<void()> block) override;
  void mainAsyncAfter(TimeInterval delay, const WorkItem& item) override;
  void mainAsync(std::function<void()> block) override;
  void utilityAsync(std::function<void()> block) override;

  /// While it runs, SIGTERM, SIGINT and SIGHUP do what `terminate()` does: the session's own ways
  /// to end a program. Terminated before it began, it returns at once.
  int run() override;
  void terminate() override;

  /// Calls `hook` on the main thread before each timer or delayed block, with the time at which it
  /// was due: the place to deliver events of another source that happened earlier. After the loop
  /// was busy, everything then runs in the order in which it happened or was due.
  void setBeforeTimer(std::function<void(Instant due)> hook);

  /// Destroys utility blocks that have not begun and waits for those that have, which takes as long
  /// as they do. Main thread; to be called while what the blocks use is still there.
  void finishUtilityWork();

 private:
  const std::thread::id mainThread_;
  GMainLoop* const loop_;
  bool terminating_ = false;
  MainQueue mainQueue_;
  TimerQueue timers_;
  UtilityQueue utilityQueue_;
};

}  // namespace hushbox
