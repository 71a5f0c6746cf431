#import "platform/macos/RunLoopMainLoop.h"

#import <AppKit/AppKit.h>
#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

#include <time.h>

#include <chrono>
#include <utility>

#import "platform/macos/StringConversion.h"

namespace hushbox {
namespace {

/// Returns a block that runs `work` and then destroys it, so that its captures are destroyed on the
/// queue's thread and not on the caller's.
dispatch_block_t movedToQueue(std::function<void()> work) {
  const auto held = std::make_shared<std::function<void()>>(std::move(work));
  return ^{
    @autoreleasepool {
      std::exchange(*held, nullptr)();
    }
  };
}

/// Lets a RegistrationToken own a timer.
struct ScheduledTimer {
  NSTimer* timer;
};

/// Ends an activity of this process when it is destroyed.
class Activity {
 public:
  explicit Activity(id<NSObject> native) : native_(native) {}
  ~Activity() {
    @autoreleasepool {
      [NSProcessInfo.processInfo endActivity:native_];
    }
  }
  Activity(const Activity&) = delete;
  Activity& operator=(const Activity&) = delete;

 private:
  id<NSObject> native_;
};

}  // namespace

Instant RunLoopMainLoop::now() const {
  // On this system this clock continues during sleep.
  return Instant(std::chrono::nanoseconds(clock_gettime_nsec_np(CLOCK_MONOTONIC_RAW)));
}

bool RunLoopMainLoop::isMainThread() const {
  return NSThread.isMainThread;
}

RegistrationToken RunLoopMainLoop::scheduleRepeating(TimeInterval interval,
                                                     std::function<void()> block) {
  @autoreleasepool {
    NSTimer* timer = [NSTimer timerWithTimeInterval:interval.count()
                                            repeats:YES
                                              block:^(NSTimer*) {
                                                @autoreleasepool {
                                                  block();
                                                }
                                              }];
    [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
    return RegistrationToken(std::make_shared<ScheduledTimer>(ScheduledTimer{timer}));
  }
}

void RunLoopMainLoop::mainAsyncAfter(TimeInterval delay, const WorkItem& item) {
  const auto nanoseconds = std::chrono::ceil<std::chrono::nanoseconds>(delay);
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, nanoseconds.count()), dispatch_get_main_queue(),
                 movedToQueue(item.invocation()));
}

void RunLoopMainLoop::mainAsync(std::function<void()> block) {
  dispatch_async(dispatch_get_main_queue(), movedToQueue(std::move(block)));
}

void RunLoopMainLoop::utilityAsync(std::function<void()> block) {
  dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), movedToQueue(std::move(block)));
}

std::shared_ptr<void> RunLoopMainLoop::beginActivity(const std::string& reason) {
  @autoreleasepool {
    constexpr NSActivityOptions options =
        NSActivityUserInitiatedAllowingIdleSystemSleep | NSActivityLatencyCritical;
    id<NSObject> native =
        [NSProcessInfo.processInfo beginActivityWithOptions:options reason:stringFromUtf8(reason)];
    return std::make_shared<Activity>(native);
  }
}

int RunLoopMainLoop::run() {
  @autoreleasepool {
    [NSApplication.sharedApplication run];
  }
  return 0;
}

void RunLoopMainLoop::terminate() {
  // Later, because terminate: exits the process while its callers are still on the stack.
  dispatch_async(dispatch_get_main_queue(), ^{
    [NSApplication.sharedApplication terminate:nil];
  });
}

}  // namespace hushbox
