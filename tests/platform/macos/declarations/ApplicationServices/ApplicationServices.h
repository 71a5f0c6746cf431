// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <CoreFoundation/CoreFoundation.h>
extern "C" {
typedef const struct __AXUIElement* AXUIElementRef;
typedef SInt32 AXError;
enum : AXError {
  kAXErrorSuccess = 0,
  kAXErrorFailure = -25200,
  kAXErrorIllegalArgument = -25201,
  kAXErrorInvalidUIElement = -25202,
  kAXErrorInvalidUIElementObserver = -25203,
  kAXErrorCannotComplete = -25204,
  kAXErrorAttributeUnsupported = -25205,
  kAXErrorActionUnsupported = -25206,
  kAXErrorNotificationUnsupported = -25207,
  kAXErrorNotImplemented = -25208,
  kAXErrorNotificationAlreadyRegistered = -25209,
  kAXErrorNotificationNotRegistered = -25210,
  kAXErrorAPIDisabled = -25211,
  kAXErrorNoValue = -25212,
  kAXErrorParameterizedAttributeUnsupported = -25213,
  kAXErrorNotEnoughPrecision = -25214
};
extern CFStringRef kAXTrustedCheckOptionPrompt DECLARED_SINCE(10.9);
#define kAXRoleAttribute CFSTR("AXRole")
#define kAXTitleAttribute CFSTR("AXTitle")
#define kAXDescriptionAttribute CFSTR("AXDescription")
#define kAXValueAttribute CFSTR("AXValue")
#define kAXChildrenAttribute CFSTR("AXChildren")
#define kAXWindowsAttribute CFSTR("AXWindows")
#define kAXIdentifierAttribute CFSTR("AXIdentifier")
#define kAXPressAction CFSTR("AXPress")
Boolean AXIsProcessTrusted(void) DECLARED_SINCE(10.4);
Boolean AXIsProcessTrustedWithOptions(CFDictionaryRef options) DECLARED_SINCE(10.9);
CFTypeID AXUIElementGetTypeID(void);
AXUIElementRef AXUIElementCreateApplication(pid_t pid);
AXError AXUIElementCopyAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                      CFTypeRef* value);
AXError AXUIElementSetAttributeValue(AXUIElementRef element, CFStringRef attribute,
                                     CFTypeRef value);
AXError AXUIElementPerformAction(AXUIElementRef element, CFStringRef action);
AXError AXUIElementSetMessagingTimeout(AXUIElementRef element, float timeoutInSeconds)
    DECLARED_SINCE(10.4);
}
