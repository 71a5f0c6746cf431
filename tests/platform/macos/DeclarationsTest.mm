// The values and types that the declarations claim and the adapters rely on. Compiles here against
// the declarations and on a Mac against the SDK, which decides.

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <CoreAudio/CoreAudio.h>
#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>
#import <ServiceManagement/ServiceManagement.h>
#import <UserNotifications/UserNotifications.h>
#import <dispatch/dispatch.h>
#import <os/log.h>

#include <time.h>

#include <cstddef>
#include <type_traits>

// Types.
static_assert(sizeof(BOOL) == 1 && sizeof(Boolean) == 1);
static_assert(sizeof(NSInteger) == 8 && std::is_signed_v<NSInteger>);
static_assert(sizeof(NSUInteger) == 8 && std::is_unsigned_v<NSUInteger>);
static_assert(sizeof(CGFloat) == 8 && std::is_same_v<CGFloat, double>);
static_assert(std::is_same_v<NSTimeInterval, double>);
static_assert(sizeof(UInt32) == 4 && std::is_unsigned_v<UInt32>);
static_assert(sizeof(OSStatus) == 4 && std::is_signed_v<OSStatus>);
static_assert(sizeof(Float32) == 4 && std::is_floating_point_v<Float32>);
static_assert(sizeof(CFIndex) == 8 && std::is_signed_v<CFIndex>);
static_assert(sizeof(CFTypeID) == 8 && std::is_unsigned_v<CFTypeID>);
static_assert(sizeof(AXError) == 4 && sizeof(pid_t) == 4);
static_assert(sizeof(NSPoint) == 16 && sizeof(NSSize) == 16 && sizeof(NSRect) == 32);
static_assert(offsetof(NSRect, size) == 16 && offsetof(NSPoint, y) == 8);
static_assert(sizeof(dispatch_time_t) == 8 && NSEC_PER_SEC == 1000000000ULL);
static_assert(QOS_CLASS_UTILITY == 0x11 && DISPATCH_TIME_NOW == 0);
static_assert(CLOCK_MONOTONIC_RAW == 4);

// Core Audio.
static_assert(sizeof(AudioObjectID) == 4 && sizeof(AudioObjectPropertyAddress) == 12);
static_assert(offsetof(AudioObjectPropertyAddress, mSelector) == 0);
static_assert(offsetof(AudioObjectPropertyAddress, mScope) == 4);
static_assert(offsetof(AudioObjectPropertyAddress, mElement) == 8);
static_assert(kAudioObjectSystemObject == 1 && kAudioObjectPropertyElementMain == 0);
static_assert(kAudioObjectPropertyScopeGlobal == 0x676c6f62);
static_assert(kAudioObjectPropertyScopeInput == 0x696e7074);
static_assert(kAudioHardwarePropertyDevices == 0x64657623);
static_assert(kAudioObjectPropertyName == 0x6c6e616d);
static_assert(kAudioDevicePropertyVolumeScalar == 0x766f6c6d);
static_assert(kAudioDevicePropertyDeviceIsRunningSomewhere == 0x676f6e65);
static_assert(kAudioHardwareNoError == 0);
static_assert(kAudioHardwareUnknownPropertyError == 0x77686f3f);
static_assert(kAudioHardwareBadObjectError == 0x216f626a);
static_assert(kAudioHardwareBadPropertySizeError == 0x2173697a);
static_assert(kAudioHardwareUnsupportedOperationError == 0x756e6f70);

// Accessibility.
static_assert(kAXErrorSuccess == 0 && kAXErrorFailure == -25200);
static_assert(kAXErrorIllegalArgument == -25201 && kAXErrorInvalidUIElement == -25202);
static_assert(kAXErrorCannotComplete == -25204 && kAXErrorAttributeUnsupported == -25205);
static_assert(kAXErrorActionUnsupported == -25206 && kAXErrorAPIDisabled == -25211);
static_assert(kAXErrorNoValue == -25212);

// AppKit and Core Graphics.
static_assert(NSControlStateValueOff == 0 && NSControlStateValueOn == 1);
static_assert(NSApplicationActivationPolicyAccessory == 1);
static_assert(NSEventModifierFlagCommand == 1 << 20);
static_assert(NSLineCapStyleButt == 0 && NSLineCapStyleRound == 1);
static_assert(NSWindingRuleNonZero == 0 && NSWindingRuleEvenOdd == 1);
static_assert(kCGBlendModeNormal == 0 && kCGBlendModeClear == 16);

// Foundation.
static_assert(NSUTF8StringEncoding == 4);
static_assert(NSDateFormatterNoStyle == 0 && NSDateFormatterShortStyle == 1);

// Notifications, login item and log.
static_assert(UNAuthorizationOptionBadge == 1 && UNAuthorizationOptionSound == 2 &&
              UNAuthorizationOptionAlert == 4);
static_assert(SMAppServiceStatusNotRegistered == 0 && SMAppServiceStatusEnabled == 1 &&
              SMAppServiceStatusRequiresApproval == 2 && SMAppServiceStatusNotFound == 3);
static_assert(OS_LOG_TYPE_DEFAULT == 0 && OS_LOG_TYPE_INFO == 1 && OS_LOG_TYPE_DEBUG == 2 &&
              OS_LOG_TYPE_ERROR == 0x10 && OS_LOG_TYPE_FAULT == 0x11);
