// Core Foundation's functions, on the Foundation objects that they are bridged to.

#import <ApplicationServices/ApplicationServices.h>
#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

#include <string>

#import "tests/platform/macos/doubles/FoundationValues.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

using hushbox::doubles::fail;

namespace {

CFBooleanRef booleanForever(BOOL value) {
  NSNumber* number = [NSNumber numberWithBool:value];
  hushbox::doubles::keepForever((__bridge void*)number);
  return (CFBooleanRef)CFRetain((__bridge CFTypeRef)number);
}

id object(CFTypeRef reference, const char* function) {
  if (!reference) fail(std::string(function) + " was given NULL");
  return (__bridge id)reference;
}

/// Arbitrary type identifiers that no pointer's low bits equal.
enum : CFTypeID {
  otherType = 1,
  stringType = 7,
  arrayType = 19,
  booleanType = 21,
  numberType = 22
};

}  // namespace

extern "C" {

void* objc_retain(void* object);
void objc_release(void* object);

const CFBooleanRef kCFBooleanTrue = booleanForever(YES);
const CFBooleanRef kCFBooleanFalse = booleanForever(NO);
CFStringRef kAXTrustedCheckOptionPrompt = CFSTR("AXTrustedCheckOptionPrompt");

CFTypeRef CFRetain(CFTypeRef reference) {
  if (!reference) fail("CFRetain was given NULL");
  return objc_retain(const_cast<void*>(reference));
}

void CFRelease(CFTypeRef reference) {
  if (!reference) fail("CFRelease was given NULL");
  objc_release(const_cast<void*>(reference));
}

CFTypeID CFGetTypeID(CFTypeRef reference) {
  @autoreleasepool {
    id value = object(reference, "CFGetTypeID");
    if (reference == kCFBooleanTrue || reference == kCFBooleanFalse) return booleanType;
    if ([value isKindOfClass:[NSString class]]) return stringType;
    if ([value isKindOfClass:[NSArray class]]) return arrayType;
    if ([value isKindOfClass:[NSNumber class]]) return numberType;
    if (hushbox::doubles::text([value description]) == "AXElementDouble") {
      return AXUIElementGetTypeID();
    }
    return otherType;
  }
}

CFTypeID CFStringGetTypeID() {
  return stringType;
}
CFTypeID CFArrayGetTypeID() {
  return arrayType;
}
CFTypeID CFBooleanGetTypeID() {
  return booleanType;
}

CFIndex CFArrayGetCount(CFArrayRef array) {
  if (CFGetTypeID(array) != arrayType) fail("CFArrayGetCount was given something else");
  return static_cast<CFIndex>(((__bridge NSArray*)array).count);
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  if (CFGetTypeID(array) != arrayType) fail("CFArrayGetValueAtIndex was given something else");
  if (index < 0) fail("CFArrayGetValueAtIndex was given a negative index");
  return (__bridge const void*)[(__bridge NSArray*)array
      objectAtIndex:static_cast<NSUInteger>(index)];
}
}
