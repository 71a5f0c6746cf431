#include "tests/platform/macos/doubles/AccessibilityDouble.h"

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>

#include "tests/platform/macos/doubles/Calls.h"
#import "tests/platform/macos/doubles/FoundationValues.h"
#include "tests/platform/macos/doubles/RunLoopDouble.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

using namespace hushbox::doubles;

@interface AXElementDouble : NSObject {
 @public
  AXNodeRef node;
  AXNodeRef application;
  float messagingTimeout;
}
@end

@implementation AXElementDouble
- (BOOL)isEqual:(id)other {
  return [other isKindOfClass:[AXElementDouble class]] &&
         node == static_cast<AXElementDouble*>(other)->node;
}
@end

namespace hushbox::doubles {
namespace {

std::map<std::int32_t, AXNodeRef> applications;

void bury(const AXNodeRef& node) {
  node->gone = true;
  for (const AXNodeRef& child : node->children) bury(child);
}

}  // namespace

bool trusted = true;
std::vector<bool> prompts;
bool axFrozen = false;
std::vector<float> axWaits;
std::int32_t axTimeoutStatus = kAXErrorSuccess;
std::vector<App> apps;

AXNodeRef& axApplication(std::int32_t pid) {
  AXNodeRef& application = applications[pid];
  if (!application) application = std::make_shared<AXNode>();
  return application;
}

void axQuit(std::int32_t pid) {
  bury(axApplication(pid));
  applications.erase(pid);
}

long axElements() {
  return liveObjects("AXElementDouble");
}

void resetAccessibility() {
  trusted = true;
  prompts.clear();
  axFrozen = false;
  axWaits.clear();
  axTimeoutStatus = kAXErrorSuccess;
  apps.clear();
  applications.clear();
}

}  // namespace hushbox::doubles

namespace {

AXElementDouble* elementOf(AXUIElementRef reference) {
  if (!reference) fail("the accessibility interface was given no element");
  id object = (__bridge id)(void*)reference;
  if (![object isKindOfClass:[AXElementDouble class]]) {
    fail("the accessibility interface was passed an object that is not an element");
  }
  return object;
}

AXElementDouble* element(const AXNodeRef& node, const AXNodeRef& application) {
  AXElementDouble* made = [[AXElementDouble alloc] init];
  made->node = node;
  made->application = application;
  return made;
}

/// The status that a call to the other process returns before it reaches the element.
AXError reach(AXElementDouble* element) {
  if (element->messagingTimeout <= 0) {
    fail("an element was called without a messaging timeout: it may hang for seconds");
  }
  if (!trusted) return kAXErrorAPIDisabled;
  if (!element->node || element->node->gone) return kAXErrorInvalidUIElement;
  if (!axFrozen) return kAXErrorSuccess;
  axWaits.push_back(element->messagingTimeout);
  keepBusy(hushbox::TimeInterval(element->messagingTimeout));
  return kAXErrorCannotComplete;
}

NSArray* childrenOf(AXElementDouble* parent) {
  NSMutableArray* list = [[NSMutableArray alloc] init];
  const AXNode& node = *parent->node;
  const auto& written = parent->application->written;
  const auto awake = written.find("AXManualAccessibility");
  if (node.asleep && (awake == written.end() || !awake->second)) return list;
  if (node.strangeChildren) [list addObject:[NSNumber numberWithInt:1]];
  for (const AXNodeRef& child : node.children) {
    [list addObject:element(child, parent->application)];
  }
  if (node.strangeChildren) {
    [list addObject:@"text"];
    [list addObject:[NSNull null]];
    [list addObject:[[NSMutableArray alloc] init]];
  }
  return list;
}

id strange(AXStrange kind) {
  NSMutableArray* list = [[NSMutableArray alloc] init];
  switch (kind) {
    case AXStrange::number:
      return [NSNumber numberWithInt:4];
    case AXStrange::boolean:
      return (__bridge id)(void*)kCFBooleanTrue;
    case AXStrange::null:
      return [NSNull null];
    case AXStrange::nestedList:
      [list addObject:[[NSMutableArray alloc] init]];
      return list;
    case AXStrange::emptyList:
      return list;
    case AXStrange::stringList:
      [list addObject:@"a"];
      return list;
    case AXStrange::loneSurrogate:
      return loneSurrogate();
    case AXStrange::nothing:
      return nil;
  }
}

}  // namespace

extern "C" {

Boolean AXIsProcessTrusted() {
  count("AXIsProcessTrusted");
  return trusted;
}

Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef reference) {
  count("AXIsProcessTrustedWithOptions");
  NSDictionary* options = (__bridge NSDictionary*)reference;
  if (options.count != 1) fail("AXIsProcessTrustedWithOptions was given unknown options");
  NSNumber* prompt = [options objectForKey:@"AXTrustedCheckOptionPrompt"];
  if (!prompt) fail("AXIsProcessTrustedWithOptions was given no prompt option");
  prompts.push_back(prompt.boolValue);
  return trusted;
}

CFTypeID AXUIElementGetTypeID() {
  return 300;
}

AXUIElementRef AXUIElementCreateApplication(pid_t pid) {
  count("AXUIElementCreateApplication");
  if (pid < 0) return nullptr;
  const auto found = applications.find(pid);
  const AXNodeRef node = found == applications.end() ? nullptr : found->second;
  @autoreleasepool {
    return (AXUIElementRef)(__bridge_retained void*)element(node, node);
  }
}

AXError AXUIElementSetMessagingTimeout(AXUIElementRef reference, float seconds) {
  count("AXUIElementSetMessagingTimeout");
  AXElementDouble* target = elementOf(reference);
  if (seconds < 0) return kAXErrorIllegalArgument;
  if (axTimeoutStatus != kAXErrorSuccess) return axTimeoutStatus;
  target->messagingTimeout = seconds;
  return kAXErrorSuccess;
}

AXError AXUIElementSetAttributeValue(AXUIElementRef reference, CFStringRef attribute,
                                     CFTypeRef value) {
  count("AXUIElementSetAttributeValue");
  AXElementDouble* target = elementOf(reference);
  if (!attribute || !value) fail("AXUIElementSetAttributeValue was given NULL");
  if (const AXError status = reach(target)) return status;
  if (CFGetTypeID(value) != CFBooleanGetTypeID())
    fail("an attribute was set to a value that is not a boolean");
  target->node->written[text((__bridge NSString*)attribute)] = value == kCFBooleanTrue;
  return kAXErrorAttributeUnsupported;
}

AXError AXUIElementCopyAttributeValue(AXUIElementRef reference, CFStringRef attribute,
                                      CFTypeRef* out) {
  count("AXUIElementCopyAttributeValue");
  AXElementDouble* source = elementOf(reference);
  if (!attribute || !out) fail("AXUIElementCopyAttributeValue was given NULL");
  if (const AXError status = reach(source)) return status;
  if (source->node->beforeRead) source->node->beforeRead();
  const std::string name = text((__bridge NSString*)attribute);
  const auto found = source->node->attributes.find(name);
  id value = nil;
  if (found != source->node->attributes.end()) {
    const auto* const words = std::get_if<std::string>(&found->second);
    value = words ? string(*words) : strange(std::get<AXStrange>(found->second));
  } else if (name == "AXChildren") {
    value = childrenOf(source);
  } else {
    return name == "AXHelp" ? kAXErrorNoValue : kAXErrorAttributeUnsupported;
  }
  *out = (CFTypeRef)(__bridge_retained void*)value;
  return kAXErrorSuccess;
}

AXError AXUIElementPerformAction(AXUIElementRef reference, CFStringRef action) {
  count("AXUIElementPerformAction");
  AXElementDouble* target = elementOf(reference);
  if (!action) fail("AXUIElementPerformAction was given NULL");
  if (const AXError status = reach(target)) return status;
  if (!target->node->perform) return kAXErrorActionUnsupported;
  return target->node->perform(text((__bridge NSString*)action));
}
}

@interface NSRunningApplication () {
 @public
  App app;
}
@end

namespace {

NSRunningApplication* runningApplication(const App& app) {
  NSRunningApplication* running = [[NSRunningApplication alloc] init];
  running->app = app;
  return running;
}

}  // namespace

@implementation NSRunningApplication
- (NSString*)bundleIdentifier {
  return app.bundle.empty() ? nil : string(app.bundle);
}
- (pid_t)processIdentifier {
  return app.pid;
}
- (BOOL)isTerminated {
  return app.terminated;
}
- (BOOL)isFinishedLaunching {
  return app.finishedLaunching;
}
+ (NSArray<NSRunningApplication*>*)runningApplicationsWithBundleIdentifier:(NSString*)identifier {
  if (!identifier) fail("applications were requested without a bundle identifier");
  NSMutableArray* list = [[NSMutableArray alloc] init];
  for (const App& each : apps) {
    if (each.bundle == text(identifier)) [list addObject:runningApplication(each)];
  }
  return list;
}
@end

@implementation NSWorkspace
+ (NSWorkspace*)sharedWorkspace {
  static NSWorkspace* only = [] {
    NSWorkspace* made = [[NSWorkspace alloc] init];
    keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (NSArray<NSRunningApplication*>*)runningApplications {
  requireMainThread("-[NSWorkspace runningApplications]");
  count("runningApplications");
  NSMutableArray* list = [[NSMutableArray alloc] init];
  for (const App& each : apps) [list addObject:runningApplication(each)];
  return list;
}
@end
