#pragma once

#import <Foundation/Foundation.h>

#include <chrono>
#include <functional>

#include "platform/Time.h"

namespace hushbox {

/// Runs the main run loop until the condition holds; returns false if it does not within the limit.
inline bool runUntil(const std::function<bool()>& condition, TimeInterval limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    @autoreleasepool {
      [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode
                          beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.01]];
    }
  }
  return true;
}

}  // namespace hushbox
