// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <MacTypes.h>
#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>
#ifndef DECLARED_SINCE
#define DECLARED_SINCE(v) __attribute__((availability(macos, introduced = v)))
#endif
#ifdef __OBJC__
#define DECLARED_BRIDGE(c) __attribute__((objc_bridge(c)))
@class NSString, NSArray, NSDictionary, NSNumber;
#else
#define DECLARED_BRIDGE(c)
#endif
extern "C" {
typedef unsigned long CFTypeID;
typedef signed long CFIndex;
typedef const void* CFTypeRef;
typedef const struct DECLARED_BRIDGE(NSString) __CFString* CFStringRef;
typedef const struct DECLARED_BRIDGE(NSArray) __CFArray* CFArrayRef;
typedef const struct DECLARED_BRIDGE(NSDictionary) __CFDictionary* CFDictionaryRef;
typedef const struct DECLARED_BRIDGE(NSNumber) __CFBoolean* CFBooleanRef;
extern const CFBooleanRef kCFBooleanTrue, kCFBooleanFalse;
CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);  // NULL crashes: guard
CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeID CFStringGetTypeID(void);
CFTypeID CFArrayGetTypeID(void);
CFTypeID CFBooleanGetTypeID(void);
CFIndex CFArrayGetCount(CFArrayRef theArray);
const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx);
}
#define CFSTR(cStr) ((CFStringRef)__builtin___CFStringMakeConstantString("" cStr ""))
