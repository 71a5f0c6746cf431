#import "platform/macos/AXAccessibilityTree.h"

#import <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "platform/Time.h"
#import "platform/macos/AXElement.h"
#import "platform/macos/StringConversion.h"

namespace hushbox {
namespace {

using Application = std::shared_ptr<AXApplication>;

/// Applications change a label some 10 to 300 ms after the press. Until then a reader of the label
/// would conclude that the press had no effect.
constexpr TimeInterval maxWaitForChange{0.5};
constexpr TimeInterval firstPause{0.01};

AttributeValue elementsOf(CFArrayRef array, const Application& application) {
  std::vector<AccessibilityElementRef> elements;
  const CFIndex count = CFArrayGetCount(array);
  for (CFIndex i = 0; i < count; ++i) {
    const CFTypeRef member = CFArrayGetValueAtIndex(array, i);
    if (!member || CFGetTypeID(member) != AXUIElementGetTypeID()) continue;
    elements.push_back(std::make_shared<AXElement>(
        application, CFReference<AXUIElementRef>::retaining(static_cast<AXUIElementRef>(member))));
  }
  if (count != 0 && elements.empty()) return OtherAttributeValue{};
  return elements;
}

AttributeValue translated(CFTypeRef value, const Application& application) {
  if (!value) return {};
  const CFTypeID type = CFGetTypeID(value);
  if (type == CFStringGetTypeID()) {
    return utf8FromString((__bridge NSString*)static_cast<CFStringRef>(value));
  }
  if (type == CFArrayGetTypeID()) return elementsOf(static_cast<CFArrayRef>(value), application);
  return OtherAttributeValue{};
}

}  // namespace

bool AXAccessibilityTree::isProcessTrusted() {
  return AXIsProcessTrusted();
}

bool AXAccessibilityTree::isProcessTrustedWithOptions(bool prompt) {
  @autoreleasepool {
    NSDictionary* options =
        @{(__bridge NSString*)kAXTrustedCheckOptionPrompt : prompt ? @YES : @NO};
    return AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
  }
}

AccessibilityElementRef AXAccessibilityTree::createApplication(std::int32_t processIdentifier) {
  return std::make_shared<AXElement>(
      std::make_shared<AXApplication>(AXApplication{token_}),
      CFReference<AXUIElementRef>::adopting(AXUIElementCreateApplication(processIdentifier)));
}

AccessibilityError AXAccessibilityTree::setMessagingTimeout(const AccessibilityElementRef& element,
                                                            float seconds) {
  const AXElement* const target = own(element);
  if (!target) return accessibility::invalidElement;
  target->application()->messagingTimeout = seconds;
  const AXError status = AXUIElementSetMessagingTimeout(target->get(), seconds);
  if (status == kAXErrorSuccess) target->setMessagingTimeout(seconds);
  return status;
}

AccessibilityError AXAccessibilityTree::setAttributeValue(const AccessibilityElementRef& element,
                                                          std::string_view attribute, bool value) {
  const AXElement* target = nullptr;
  if (const auto status = prepare(element, target)) return status;
  @autoreleasepool {
    return AXUIElementSetAttributeValue(target->get(),
                                        (__bridge CFStringRef)stringFromUtf8(attribute),
                                        value ? kCFBooleanTrue : kCFBooleanFalse);
  }
}

AccessibilityError AXAccessibilityTree::copyAttributeValue(const AccessibilityElementRef& element,
                                                           std::string_view attribute,
                                                           AttributeValue& value) {
  const AXElement* target = nullptr;
  if (const auto status = prepare(element, target)) return status;
  @autoreleasepool {
    CFTypeRef copied = nullptr;
    const AXError status = AXUIElementCopyAttributeValue(
        target->get(), (__bridge CFStringRef)stringFromUtf8(attribute), &copied);
    if (status != kAXErrorSuccess) return status;
    const auto owned = CFReference<CFTypeRef>::adopting(copied);
    value = translated(copied, target->application());
    return status;
  }
}

AccessibilityError AXAccessibilityTree::performAction(const AccessibilityElementRef& element,
                                                      std::string_view action) {
  const AXElement* target = nullptr;
  if (const auto status = prepare(element, target)) return status;
  const auto before = appearance(element);
  @autoreleasepool {
    const AXError status =
        AXUIElementPerformAction(target->get(), (__bridge CFStringRef)stringFromUtf8(action));
    if (status != kAXErrorSuccess || !before) return status;
  }
  waitForChange(element, *before);
  return accessibility::success;
}

std::optional<std::vector<AttributeValue>> AXAccessibilityTree::appearance(
    const AccessibilityElementRef& element) {
  std::vector<AttributeValue> values;
  for (const char* attribute : {"AXDescription", "AXTitle", "AXHelp", "AXValue"}) {
    AttributeValue value;
    const auto status = copyAttributeValue(element, attribute, value);
    if (status == accessibility::cannotComplete) return std::nullopt;
    values.push_back(std::move(value));
  }
  return values;
}

void AXAccessibilityTree::waitForChange(const AccessibilityElementRef& element,
                                        const std::vector<AttributeValue>& before) {
  TimeInterval left = maxWaitForChange;
  for (TimeInterval pause = firstPause; left.count() > 0; pause *= 2) {
    if (appearance(element) != before) return;
    const TimeInterval span = std::min(pause, left);
    [NSThread sleepForTimeInterval:span.count()];
    left -= span;
  }
}

const AXElement* AXAccessibilityTree::own(const AccessibilityElementRef& element) const {
  const auto* const found = dynamic_cast<const AXElement*>(element.get());
  if (!found || !found->get() || found->application()->tree.lock() != token_) return nullptr;
  return found;
}

AccessibilityError AXAccessibilityTree::prepare(const AccessibilityElementRef& element,
                                                const AXElement*& found) const {
  found = own(element);
  if (!found) return accessibility::invalidElement;
  const float seconds = found->application()->messagingTimeout;
  if (found->messagingTimeout() == seconds) return accessibility::success;
  const AXError status = AXUIElementSetMessagingTimeout(found->get(), seconds);
  if (status == kAXErrorSuccess) found->setMessagingTimeout(seconds);
  return status;
}

}  // namespace hushbox
