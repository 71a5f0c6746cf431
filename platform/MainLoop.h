#pragma once

#include <functional>

#include "platform/RegistrationToken.h"
#include "platform/Time.h"
#include "platform/WorkItem.h"

namespace hushbox {

/// The platform's main run loop, its timers and queues, and the one place where threads meet.
///
/// Every block runs on the main thread, except those given to `utilityAsync`. All operations are
/// for the main thread, except `mainAsync`, `isMainThread` and `now`, which any thread may call.
class MainLoop {
 public:
  virtual ~MainLoop() = default;

  /// Elapsed time; see ContinuousClock.
  virtual Instant now() const = 0;

  virtual bool isMainThread() const = 0;

  /// Runs `block` every `interval`, for the first time one interval from now, for as long as the
  /// loop lives: letting go of the registration does not stop it. A late firing is not made up for:
  /// however many intervals were missed, the block runs once. An open menu does not delay it.
  virtual RegistrationToken scheduleRepeating(TimeInterval interval,
                                              std::function<void()> block) = 0;

  /// Runs `item` once after `delay`, unless it is cancelled first.
  virtual void mainAsyncAfter(TimeInterval delay, const WorkItem& item) = 0;

  /// Runs `block` on the main thread in a later turn of the loop, in the order of the calls.
  virtual void mainAsync(std::function<void()> block) = 0;

  /// Runs `block` on a background thread of "utility" quality of service. Blocks may block; they
  /// run side by side and in no particular order. `block` is destroyed on that thread.
  virtual void utilityAsync(std::function<void()> block) = 0;

  /// Runs the application until `terminate()`; returns the process's exit status, 0.
  virtual int run() = 0;

  /// Asks the application to end: what a menu's quit item does. Returns at once.
  virtual void terminate() = 0;
};

}  // namespace hushbox
