#import "platform/macos/RunLoopMainLoop.h"

#import <AppKit/AppKit.h>
#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

#include <time.h>

#include <chrono>
#include <utility>

namespace hushbox {
namespace {

/// A block for a queue that runs `work` and ends it there, on the queue's thread: nothing of it
/// stays with the thread that hands it over.
dispatch_block_t handedOver(std::function<void()> work) {
  const auto held = std::make_shared<std::function<void()>>(std::move(work));
  return ^{
    @autoreleasepool {
      std::exchange(*held, nullptr)();
    }
  };
}

/// Keeps an object of the Objective-C runtime for a registration.
struct ScheduledTimer {
  NSTimer* timer;
};

}  // namespace

Instant RunLoopMainLoop::now() const {
  // On this system the one that goes on during sleep.
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
                 handedOver(item.invocation()));
}

void RunLoopMainLoop::mainAsync(std::function<void()> block) {
  dispatch_async(dispatch_get_main_queue(), handedOver(std::move(block)));
}

void RunLoopMainLoop::utilityAsync(std::function<void()> block) {
  dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), handedOver(std::move(block)));
}

int RunLoopMainLoop::run() {
  @autoreleasepool {
    [NSApplication.sharedApplication run];
  }
  return 0;
}

void RunLoopMainLoop::terminate() {
  // Not from within: it ends the process, under the feet of whoever asked for it.
  dispatch_async(dispatch_get_main_queue(), ^{
    [NSApplication.sharedApplication terminate:nil];
  });
}

}  // namespace hushbox
