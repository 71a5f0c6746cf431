// Rules that the doubles of the frameworks enforce.

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <CoreAudio/CoreAudio.h>
#import <UserNotifications/UserNotifications.h>
#import <os/log.h>

#include <gmock/gmock.h>

#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/runtime/RaisedException.h"

namespace hushbox {
namespace {

using testing::ElementsAre;

constexpr AudioObjectPropertyAddress volume{kAudioDevicePropertyVolumeScalar,
                                            kAudioObjectPropertyScopeInput, 0};

class DoublesTest : public MacFixture {
 protected:
  /// Adds a listener that counts its calls.
  AudioObjectPropertyListenerBlock listen(std::uint32_t device) {
    int* const counted = &calls;
    AudioObjectPropertyListenerBlock block = [^(UInt32, const AudioObjectPropertyAddress*) {
      ++*counted;
    } copy];
    EXPECT_EQ(
        AudioObjectAddPropertyListenerBlock(device, &volume, dispatch_get_main_queue(), block), 0);
    return block;
  }

  int calls = 0;
};
using DoublesDeathTest = DoublesTest;

TEST_F(DoublesTest, ListenerIsCalledOnItsQueueUntilItsRemoval) {
  const auto device = doubles::plug({.name = "Jabra"});
  const auto block = listen(device);
  doubles::setInputVolume(device, 0.5F);
  EXPECT_EQ(calls, 0);
  settle();
  EXPECT_EQ(calls, 1);
  AudioObjectRemovePropertyListenerBlock(device, &volume, dispatch_get_main_queue(), block);
  doubles::setInputVolume(device, 1);
  settle();
  EXPECT_EQ(calls, 1);
}

TEST_F(DoublesTest, OneCallMayFollowTheRemoval) {
  const auto device = doubles::plug({.name = "Jabra"});
  const auto block = listen(device);
  doubles::deliverOneCallAfterRemoval();
  AudioObjectRemovePropertyListenerBlock(device, &volume, dispatch_get_main_queue(), block);
  settle();
  EXPECT_EQ(calls, 1);
}

TEST_F(DoublesDeathTest, OnlyTheIdenticalListenerCanBeRemoved) {
  const auto device = doubles::plug({.name = "Jabra"});
  const auto block = listen(device);
  int* const counted = &calls;
  const AudioObjectPropertyListenerBlock twin = ^(UInt32, const AudioObjectPropertyAddress*) {
    ++*counted;
  };
  EXPECT_DEATH(
      AudioObjectRemovePropertyListenerBlock(device, &volume, dispatch_get_main_queue(), twin),
      "removed with another block");
  EXPECT_DEATH(AudioObjectRemovePropertyListenerBlock(
                   device, &volume, dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), block),
               "removed with another block");
}

TEST_F(DoublesDeathTest, ElementWithoutATimeoutCannotBeCalled) {
  doubles::axApplication(7)->attributes["AXTitle"] = std::string("Teams");
  const AXUIElementRef element = AXUIElementCreateApplication(7);
  CFTypeRef value = nullptr;
  EXPECT_DEATH(AXUIElementCopyAttributeValue(element, kAXTitleAttribute, &value),
               "without a messaging timeout");
  EXPECT_EQ(AXUIElementSetMessagingTimeout(element, 0.5F), kAXErrorSuccess);
  EXPECT_EQ(AXUIElementCopyAttributeValue(element, kAXTitleAttribute, &value), kAXErrorSuccess);
  EXPECT_EQ(CFGetTypeID(value), CFStringGetTypeID());
  CFRelease(value);
  CFRelease(element);
}

TEST_F(DoublesTest, ChildDoesNotInheritItsParentsTimeout) {
  doubles::axApplication(7)->children.push_back(std::make_shared<doubles::AXNode>());
  const AXUIElementRef parent = AXUIElementCreateApplication(7);
  AXUIElementSetMessagingTimeout(parent, 0.5F);
  CFTypeRef children = nullptr;
  AXUIElementCopyAttributeValue(parent, kAXChildrenAttribute, &children);
  const auto child =
      static_cast<AXUIElementRef>(CFArrayGetValueAtIndex(static_cast<CFArrayRef>(children), 0));
  CFTypeRef value = nullptr;
  EXPECT_DEATH(AXUIElementCopyAttributeValue(child, kAXTitleAttribute, &value),
               "without a messaging timeout");
  CFRelease(children);
  CFRelease(parent);
}

TEST_F(DoublesTest, NotificationCenterRaisesOutsideABundle) {
  doubles::setBundleIdentifier(std::nullopt);
  EXPECT_THROW((void)[UNUserNotificationCenter currentNotificationCenter],
               doubles::RaisedException);
}

TEST_F(DoublesTest, NotificationCenterRepliesOffTheMainThread) {
  __block bool onMain = true;
  [[UNUserNotificationCenter currentNotificationCenter]
      requestAuthorizationWithOptions:UNAuthorizationOptionAlert
                    completionHandler:^(BOOL, NSError*) {
                      onMain = NSThread.isMainThread;
                    }];
  settle();
  EXPECT_FALSE(onMain);
}

TEST_F(DoublesTest, LogHidesWhatIsNotMarkedPublic) {
  const os_log_t log = os_log_create("com.example", "test");
  os_log_with_type(log, OS_LOG_TYPE_INFO, "%{public}s, %s, %d%% of %{private}d", "seen", "hidden",
                   30, 7);
  ASSERT_EQ(doubles::logRecords().size(), 1U);
  EXPECT_EQ(doubles::logRecords()[0].text, "seen, <private>, 30% of <private>");
  EXPECT_EQ(doubles::logRecords()[0].subsystem, "com.example");
}

TEST_F(DoublesTest, StatusItemWithoutAnOwnerLeavesTheMenuBar) {
  @autoreleasepool {
    NSStatusItem* item =
        [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
    EXPECT_EQ(doubles::statusItemCount(), 1U);
    EXPECT_EQ(item.length, NSVariableStatusItemLength);
    item = nil;
  }
  EXPECT_EQ(doubles::statusItemCount(), 0U);
}

TEST_F(DoublesDeathTest, DrawingRequiresTheCurrentContext) {
  EXPECT_DEATH([NSColor.blackColor setFill], "without a current context");
  EXPECT_DEATH(CGContextSetAlpha(nullptr, 1), "given no context");
}

TEST_F(DoublesDeathTest, DisabledRowCannotBeChosen) {
  NSStatusItem* item = [NSStatusBar.systemStatusBar statusItemWithLength:-1];
  item.menu = [[NSMenu alloc] initWithTitle:@""];
  item.menu.autoenablesItems = NO;
  NSMenuItem* row = [[NSMenuItem alloc] initWithTitle:@"Later"
                                               action:@selector(run:)
                                        keyEquivalent:@""];
  [item.menu insertItem:row atIndex:0];
  row.enabled = NO;
  EXPECT_DEATH(doubles::chooseMenuItem("Later"), "disabled or absent");
}

TEST_F(DoublesTest, ScriptedTaskWritesItsScript) {
  doubles::scriptTask("/usr/sbin/report", {"-json"}, {.output = "{}"});
  NSTask* task = [[NSTask alloc] init];
  NSPipe* pipe = [NSPipe pipe];
  task.executableURL = [NSURL fileURLWithPath:@"/usr/sbin/report"];
  task.arguments = @[ @"-json" ];
  task.standardOutput = pipe;
  EXPECT_TRUE([task launchAndReturnError:nil]);
  NSData* output = [pipe.fileHandleForReading readDataToEndOfFileAndReturnError:nil];
  EXPECT_EQ(std::string(static_cast<const char*>(output.bytes), output.length), "{}");
  [task waitUntilExit];
  EXPECT_EQ(doubles::launchedTasks(), 1U);
}

TEST_F(DoublesTest, HangingTaskDoesNotStopTheClock) {
  doubles::scriptTask("/usr/sbin/report", {}, {.hangs = true});
  __block bool ended = false;
  dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), ^{
    NSTask* task = [[NSTask alloc] init];
    task.executableURL = [NSURL fileURLWithPath:@"/usr/sbin/report"];
    [task launchAndReturnError:nil];
    [task waitUntilExit];
    dispatch_async(dispatch_get_main_queue(), ^{
      ended = true;
    });
  });
  advance(TimeInterval(60));
  EXPECT_FALSE(ended);
  doubles::endHangingTasks();
  advance(TimeInterval(1));
  EXPECT_TRUE(ended);
}

}  // namespace
}  // namespace hushbox
