#pragma once

#include <glib.h>

#include <functional>
#include <thread>

#include "platform/MainLoop.h"
#include "platform/linux/mainloop/MainQueue.h"
#include "platform/linux/mainloop/TimerQueue.h"
#include "platform/linux/mainloop/UtilityQueue.h"

namespace hushbox {

/// The main loop on GLib's default main context, which it shares with any other sources.
///
/// The thread that constructs it is the main thread. Timers and delayed work measure elapsed time,
/// including the machine's sleep, and never fire early. The destructor calls `finishUtilityWork()`
/// and then destroys all timers and all blocks that have not run.
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
  /// Does nothing: no desktop here throttles timers of background programs.
  std::shared_ptr<void> beginActivity(const std::string&) override {
    return std::make_shared<char>();
  }

  /// While it runs, SIGTERM, SIGINT and SIGHUP, with which sessions end programs, do the same as
  /// `terminate()`. Returns at once if terminated before.
  int run() override;
  void terminate() override;

  /// Calls `hook` on the main thread before each timer or delayed block, with the time at which it
  /// was due: the place to deliver events of another source that happened earlier. After the loop
  /// was busy, everything then runs in the order in which it happened or was due.
  void setBeforeTimer(std::function<void(Instant due)> hook);

  /// Destroys utility blocks that have not started and waits for those that have, however long they
  /// run. Main thread; call it while everything the blocks use still exists.
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
