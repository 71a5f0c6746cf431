#include "tests/platform/macos/doubles/RunLoopDouble.h"

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#import "tests/platform/macos/doubles/FoundationValues.h"
#include "tests/platform/macos/doubles/ProcessInfoDouble.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

NSRunLoopMode const NSDefaultRunLoopMode = @"kCFRunLoopDefaultMode";
NSRunLoopMode const NSRunLoopCommonModes = @"kCFRunLoopCommonModes";

using Nanoseconds = std::uint64_t;

@interface NSTimer () {
 @public
  void (^block)(NSTimer* timer);
  Nanoseconds interval;
  Nanoseconds due;
  bool repeats;
  bool valid;
  bool inCommonModes;
}
@end

namespace hushbox::doubles {
namespace {

struct Delayed {
  Nanoseconds due;
  dispatch_block_t block;
};

/// An hour after the machine started, so that no absolute time looks like a short span.
constexpr Nanoseconds beginning = 3600 * NSEC_PER_SEC;
constexpr Nanoseconds maxSleep = 60 * NSEC_PER_SEC;
constexpr std::chrono::seconds maxWait(20);

const std::thread::id mainThread = std::this_thread::get_id();
std::mutex mutex;
std::condition_variable changed;
std::deque<dispatch_block_t> mainQueue;
std::deque<dispatch_block_t> globalQueue;
std::vector<Delayed> delayed;
std::vector<NSTimer*> timers;
std::atomic<Nanoseconds> clock{beginning};
/// Time that the main thread has slept since the loop ran.
Nanoseconds slept = 0;
int running = 0;
int parked = 0;
bool tracking = false;
char mainQueueIdentity;
char globalQueueIdentity;

Nanoseconds nanoseconds(TimeInterval span) {
  return static_cast<Nanoseconds>(std::chrono::round<std::chrono::nanoseconds>(span).count());
}

void startGlobalBlocks() {
  std::unique_lock lock(mutex);
  while (!globalQueue.empty()) {
    dispatch_block_t block = globalQueue.front();
    globalQueue.pop_front();
    ++running;
    // The thread owns the only reference, so that the block is destroyed there.
    void* const held = (__bridge_retained void*)block;
    block = nil;
    std::thread([held] {
      @autoreleasepool {
        dispatch_block_t mine = (__bridge_transfer dispatch_block_t)held;
        mine();
        mine = nil;
      }
      const std::lock_guard ended(mutex);
      --running;
      changed.notify_all();
    }).detach();
  }
}

bool runOneMainBlock() {
  dispatch_block_t block;
  {
    const std::lock_guard lock(mutex);
    if (mainQueue.empty()) return false;
    block = mainQueue.front();
    mainQueue.pop_front();
  }
  // Without a pool: AppKit drains its own only after an event, which may be hours away.
  block();
  return true;
}

/// When the system fires the timer at the latest, which is when this one does.
Nanoseconds latest(NSTimer* timer) {
  return nappedUntil(timer->due + nanoseconds(hushbox::TimeInterval(timer.tolerance)));
}

bool mayFire(NSTimer* timer) {
  return timer->valid && (timer->inCommonModes || !tracking);
}

void fire(NSTimer* timer) {
  // Missed firings are skipped.
  const Nanoseconds missed = timer->interval ? (clock - timer->due) / timer->interval : 0;
  timer->due += (missed + 1) * timer->interval;
  if (timer->block) timer->block(timer);
  if (!timer->repeats) [timer invalidate];
}

bool fireOneTimer() {
  NSTimer* next = nil;
  for (NSTimer* timer : timers) {
    if (mayFire(timer) && latest(timer) <= clock && (!next || timer->due < next->due)) next = timer;
  }
  if (!next) return false;
  fire(next);
  return true;
}

/// Moves blocks whose delay has passed to the main queue.
void queueDelayed() {
  const std::lock_guard lock(mutex);
  std::stable_sort(delayed.begin(), delayed.end(),
                   [](const Delayed& a, const Delayed& b) { return a.due < b.due; });
  while (!delayed.empty() && nappedUntil(delayed.front().due) <= clock) {
    mainQueue.push_back(delayed.front().block);
    delayed.erase(delayed.begin());
  }
}

/// Waits until a background thread exits or queues a block; returns whether there is work now.
bool waitForBackground() {
  std::unique_lock lock(mutex);
  const auto moved = [] { return running <= parked || !mainQueue.empty(); };
  if (!moved() && !changed.wait_for(lock, maxWait, moved)) {
    fail("a block on a global queue does not end");
  }
  return !mainQueue.empty() || !globalQueue.empty();
}

std::optional<Nanoseconds> nextDue() {
  const std::lock_guard lock(mutex);
  std::optional<Nanoseconds> next;
  const auto consider = [&](Nanoseconds due) { next = next ? std::min(*next, due) : due; };
  for (const Delayed& item : delayed) consider(nappedUntil(item.due));
  for (NSTimer* timer : timers) {
    if (mayFire(timer)) consider(latest(timer));
  }
  return next;
}

/// Advances the clock to the next deadline up to `end`; returns false if there is none.
bool goOn(Nanoseconds end) {
  const auto next = nextDue();
  if (!next || *next > end) return false;
  clock = std::max<Nanoseconds>(clock, *next);
  return true;
}

}  // namespace

bool isMainThread() {
  return std::this_thread::get_id() == mainThread;
}

void requireMainThread(const char* what) {
  if (!isMainThread()) fail(std::string(what) + " was called off the main thread");
}

Instant now() {
  return Instant(std::chrono::nanoseconds(clock));
}

void settle() {
  requireMainThread("settle");
  slept = 0;
  do {
    do {
      queueDelayed();
      startGlobalBlocks();
    } while (runOneMainBlock() || fireOneTimer());
  } while (waitForBackground());
}

void advance(TimeInterval span) {
  runUntil([] { return false; }, span);
}

bool runUntil(const std::function<bool()>& condition, TimeInterval limit) {
  const Nanoseconds end = clock + nanoseconds(limit);
  for (;;) {
    if (condition()) return true;
    settle();
    if (condition()) return true;
    if (!goOn(end)) break;
  }
  clock = std::max<Nanoseconds>(clock, end);
  settle();
  return condition();
}

bool runOne(Instant end) {
  queueDelayed();
  startGlobalBlocks();
  return runOneMainBlock() || fireOneTimer() || waitForBackground() ||
         goOn(static_cast<Nanoseconds>(end.time_since_epoch().count()));
}

void keepBusy(TimeInterval span) {
  clock += nanoseconds(span);
}

std::size_t timerCount() {
  return timers.size();
}

std::size_t pendingMainBlocks() {
  const std::lock_guard lock(mutex);
  return mainQueue.size() + delayed.size();
}

void setTracking(bool value) {
  tracking = value;
}

Parked::Parked() {
  const std::lock_guard lock(mutex);
  if (!isMainThread()) ++parked;
  changed.notify_all();
}

Parked::~Parked() {
  const std::lock_guard lock(mutex);
  if (!isMainThread()) --parked;
}

void resetRunLoop() {
  std::deque<dispatch_block_t> oldMain;
  std::deque<dispatch_block_t> oldGlobal;
  std::vector<Delayed> oldDelayed;
  {
    std::unique_lock lock(mutex);
    if (!changed.wait_for(lock, maxWait, [] { return running == 0; })) {
      fail("a block on a global queue still runs at the end of the test");
    }
    oldMain.swap(mainQueue);
    oldGlobal.swap(globalQueue);
    oldDelayed.swap(delayed);
  }
  const auto oldTimers = timers;
  for (NSTimer* timer : oldTimers) [timer invalidate];
  tracking = false;
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

extern "C" {

uint64_t clock_gettime_nsec_np(clockid_t which) {
  if (which != CLOCK_MONOTONIC_RAW) fail("a clock without a double was read");
  return hushbox::doubles::clock;
}

dispatch_queue_t dispatch_get_main_queue() {
  return reinterpret_cast<dispatch_queue_t>(&mainQueueIdentity);
}

dispatch_queue_t dispatch_get_global_queue(intptr_t identifier, uintptr_t flags) {
  if (identifier != QOS_CLASS_UTILITY) fail("a global queue must have utility quality of service");
  if (flags != 0) fail("a global queue's flags must be 0");
  return reinterpret_cast<dispatch_queue_t>(&globalQueueIdentity);
}

void dispatch_async(dispatch_queue_t queue, dispatch_block_t block) {
  if (!queue || !block) fail("dispatch_async was given no queue or no block");
  dispatch_block_t held = [block copy];
  const std::lock_guard lock(mutex);
  (queue == dispatch_get_main_queue() ? mainQueue : globalQueue).push_back(held);
  held = nil;
  changed.notify_all();
}

dispatch_time_t dispatch_time(dispatch_time_t when, int64_t delta) {
  if (when != DISPATCH_TIME_NOW) fail("dispatch_time requires DISPATCH_TIME_NOW");
  return hushbox::doubles::clock + static_cast<Nanoseconds>(std::max<int64_t>(delta, 0));
}

void dispatch_after(dispatch_time_t when, dispatch_queue_t queue, dispatch_block_t block) {
  if (!block) fail("dispatch_after was given no block");
  if (queue != dispatch_get_main_queue()) fail("dispatch_after on a queue other than the main one");
  const std::lock_guard lock(mutex);
  delayed.push_back({when, [block copy]});
}
}

@implementation NSThread
+ (BOOL)isMainThread {
  return hushbox::doubles::isMainThread();
}
+ (void)sleepForTimeInterval:(NSTimeInterval)seconds {
  requireMainThread("+[NSThread sleepForTimeInterval:]");
  slept += nanoseconds(hushbox::TimeInterval(seconds));
  if (slept > maxSleep) fail("the main thread sleeps on and on without running its loop");
  keepBusy(hushbox::TimeInterval(seconds));
}
@end

@implementation NSTimer
@synthesize tolerance;
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)seconds
                          repeats:(BOOL)repeating
                            block:(void (^)(NSTimer*))handler {
  if (!handler) fail("a timer was given no block");
  NSTimer* timer = [[NSTimer alloc] init];
  timer->block = [handler copy];
  timer->interval = nanoseconds(hushbox::TimeInterval(seconds > 0 ? seconds : 0.0001));
  timer->due = hushbox::doubles::clock + timer->interval;
  timer->repeats = repeating;
  timer->valid = true;
  return timer;
}
+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)seconds
                                   repeats:(BOOL)repeating
                                     block:(void (^)(NSTimer*))handler {
  requireMainThread("+[NSTimer scheduledTimerWithTimeInterval:repeats:block:]");
  NSTimer* timer = [self timerWithTimeInterval:seconds repeats:repeating block:handler];
  timers.push_back(timer);
  return timer;
}
- (void)invalidate {
  requireMainThread("-[NSTimer invalidate]");
  NSTimer* keptAlive = self;
  keptAlive->valid = false;
  keptAlive->block = nil;
  std::erase_if(timers, [keptAlive](NSTimer* each) { return each == keptAlive; });
}
@end

@implementation NSRunLoop
+ (NSRunLoop*)mainRunLoop {
  static NSRunLoop* only = [] {
    NSRunLoop* made = [[NSRunLoop alloc] init];
    keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode {
  requireMainThread("-[NSRunLoop addTimer:forMode:]");
  if (!timer || !timer->valid) fail("a run loop was given no timer, or an invalid one");
  timer->inCommonModes = timer->inCommonModes || [mode isEqualToString:NSRunLoopCommonModes];
  if (std::find(timers.begin(), timers.end(), timer) == timers.end()) timers.push_back(timer);
}
@end
