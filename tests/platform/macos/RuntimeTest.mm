// Rules that the runtime enforces.

#import <AppKit/AppKit.h>
#import <Foundation/Foundation.h>

#include <gmock/gmock.h>

#include "tests/platform/macos/MacFixture.h"

@interface RuntimeTestObject : NSObject
@property(nonatomic, copy) void (^block)(void);
@property(nonatomic, weak) id other;
@end
@implementation RuntimeTestObject
@end

@interface NSObject (RuntimeTest)
- (void)nobodyImplementsThis;
@end

extern "C" {
void objc_release(void* object);
id objc_loadWeakRetained(__weak id* place);
}

namespace hushbox {
namespace {

using testing::ElementsAre;

class RuntimeTest : public MacFixture {};
using RuntimeDeathTest = RuntimeTest;

TEST_F(RuntimeTest, CountsObjectsUntilTheirLastRelease) {
  const long before = doubles::liveObjects("RuntimeTestObject");
  @autoreleasepool {
    RuntimeTestObject* object = [[RuntimeTestObject alloc] init];
    RuntimeTestObject* second = object;
    object = nil;
    EXPECT_EQ(doubles::liveObjects("RuntimeTestObject"), before + 1);
    EXPECT_TRUE([second isKindOfClass:[NSObject class]]);
    second = nil;
  }
  EXPECT_EQ(doubles::liveObjects("RuntimeTestObject"), before);
}

TEST_F(RuntimeTest, WeakReferenceIsNilAfterTheLastRelease) {
  RuntimeTestObject* holder = [[RuntimeTestObject alloc] init];
  @autoreleasepool {
    RuntimeTestObject* held = [[RuntimeTestObject alloc] init];
    holder.other = held;
    EXPECT_TRUE(holder.other == held);
  }
  EXPECT_TRUE(holder.other == nil);
}

TEST_F(RuntimeTest, CycleThroughABlockShowsInTheCount) {
  const long before = doubles::liveObjects();
  RuntimeTestObject* object = [[RuntimeTestObject alloc] init];
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Warc-retain-cycles"
  @autoreleasepool {
    object.block = ^{
      (void)object;
    };
  }
#pragma clang diagnostic pop
  __weak RuntimeTestObject* observed = object;
  object = nil;
  EXPECT_EQ(doubles::liveObjects(), before + 2);
  @autoreleasepool {
    observed.block = nil;
  }
  EXPECT_EQ(doubles::liveObjects(), before);
}

TEST_F(RuntimeTest, MessageToNilIsZero) {
  NSString* nothing = nil;
  EXPECT_EQ(nothing.length, 0U);
  EXPECT_TRUE(nothing.UTF8String == nullptr);
}

TEST_F(RuntimeTest, LiteralsOfEveryKindKeepTheirCharacters) {
  EXPECT_STREQ(@"Grant Accessibility… 🎙".UTF8String, "Grant Accessibility… 🎙");
  EXPECT_EQ(@"… 🎙".length, 4U);
  const char broken[] = {'a', static_cast<char>(0xff)};
  NSString* string = [[NSString alloc] initWithBytes:broken length:2 encoding:NSUTF8StringEncoding];
  EXPECT_TRUE(string == nil);
}

TEST_F(RuntimeDeathTest, MistakesAbortWithAMessage) {
  NSObject* object = [[NSObject alloc] init];
  EXPECT_DEATH([object nobodyImplementsThis], "unrecognized selector -\\[NSObject nobody");
  EXPECT_DEATH(
      {
        void* const raw = (__bridge void*)object;
        objc_release(raw);
        objc_release(raw);
      },
      "after its last release");
  EXPECT_DEATH(CFRelease(nullptr), "CFRelease was given NULL");
}

TEST_F(RuntimeDeathTest, AppKitOffTheMainThreadAborts) {
  EXPECT_DEATH(
      {
        dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{
          (void)[NSStatusBar systemStatusBar];
        });
        settle();
      },
      "systemStatusBar\\] was called off the main thread");
}

TEST_F(RuntimeTest, TimerOutsideTheCommonModesWaitsWhileTheMenuIsOpen) {
  __block int usual = 0;
  __block int common = 0;
  [NSTimer scheduledTimerWithTimeInterval:1
                                  repeats:YES
                                    block:^(NSTimer*) {
                                      ++usual;
                                    }];
  NSTimer* timer = [NSTimer timerWithTimeInterval:1
                                          repeats:YES
                                            block:^(NSTimer*) {
                                              ++common;
                                            }];
  [NSRunLoop.mainRunLoop addTimer:timer forMode:NSRunLoopCommonModes];
  advance(TimeInterval(2));
  EXPECT_EQ(usual, 2);
  EXPECT_EQ(common, 2);
  doubles::setTracking(true);
  advance(TimeInterval(3));
  EXPECT_EQ(usual, 2);
  EXPECT_EQ(common, 5);
  doubles::setTracking(false);
  settle();
  EXPECT_EQ(usual, 3);
}

TEST_F(RuntimeTest, DelayedBlocksRunInOrderOnTime) {
  std::vector<int> order;
  std::vector<int>* const ran = &order;
  const auto after = [ran](double seconds, int number) {
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, static_cast<int64_t>(seconds * NSEC_PER_SEC)),
                   dispatch_get_main_queue(), ^{
                     ran->push_back(number);
                   });
  };
  after(0.3, 2);
  after(0.1, 1);
  advance(TimeInterval(0.2));
  EXPECT_THAT(order, ElementsAre(1));
  advance(TimeInterval(0.1));
  EXPECT_THAT(order, ElementsAre(1, 2));
}

TEST_F(RuntimeTest, GlobalQueuesRunConcurrentlyOffTheMainThread) {
  __block bool offMain = false;
  __block bool backOnMain = false;
  dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{
    offMain = !NSThread.isMainThread;
    dispatch_async(dispatch_get_main_queue(), ^{
      backOnMain = NSThread.isMainThread;
    });
  });
  EXPECT_FALSE(offMain);
  settle();
  EXPECT_TRUE(offMain);
  EXPECT_TRUE(backOnMain);
}

}  // namespace
}  // namespace hushbox
