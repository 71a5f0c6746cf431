#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/RegistrationToken.h"
#include "platform/Time.h"
#include "platform/WorkItem.h"

namespace hushbox {

/// The platform's main run loop with its timers and queues; the only place where threads meet.
///
/// Every block runs on the main thread, except those given to `utilityAsync`. `mainAsync`,
/// `isMainThread` and `now` may be called on any thread, everything else on the main thread only.
/// Whether the time that the machine sleeps counts towards an interval or a delay is up to the
/// platform.
class MainLoop {
 public:
  virtual ~MainLoop() = default;

  /// The current time on the continuous clock, sleep included; see ContinuousClock.
  virtual Instant now() const = 0;

  /// Whether the caller runs on the main thread.
  virtual bool isMainThread() const = 0;

  /// Runs `block` every `interval`, first one interval from now, until the loop is destroyed;
  /// destroying the token does not stop the timer. Missed firings are not made up for: however many
  /// intervals have passed, the block runs once. The timer fires while a menu is open.
  virtual RegistrationToken scheduleRepeating(TimeInterval interval,
                                              std::function<void()> block) = 0;

  /// Runs `item` once, `delay` from now, unless it is cancelled first. Destroying the item does not
  /// cancel it.
  virtual void mainAsyncAfter(TimeInterval delay, const WorkItem& item) = 0;

  /// Runs `block` on the main thread in a later turn of the loop. Blocks run in the order in which
  /// they were posted.
  virtual void mainAsync(std::function<void()> block) = 0;

  /// Runs `block` on a background thread of "utility" quality of service and destroys it there.
  /// Blocks may take long; they run concurrently and in no particular order.
  virtual void utilityAsync(std::function<void()> block) = 0;

  /// Keeps the system from throttling this process's timers and delayed work, as some systems do to
  /// a program without windows, until the result is destroyed. The system's tools show `reason`.
  /// Never null. Without it timers and delayed work may be seconds late.
  virtual std::shared_ptr<void> beginActivity(const std::string& reason) = 0;

  /// Runs the application until `terminate()`, then returns the process's exit status, 0. On macOS
  /// the process exits inside the call.
  virtual int run() = 0;

  /// Asks the application to quit, as a menu's Quit item does. Returns at once.
  virtual void terminate() = 0;
};

}  // namespace hushbox
