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
typedef unsigned long CFHashCode;
typedef const void* CFTypeRef;
typedef const struct DECLARED_BRIDGE(NSString) __CFString* CFStringRef;
typedef const struct DECLARED_BRIDGE(NSArray) __CFArray* CFArrayRef;
typedef const struct DECLARED_BRIDGE(NSDictionary) __CFDictionary* CFDictionaryRef;
typedef const struct DECLARED_BRIDGE(NSNumber) __CFBoolean* CFBooleanRef;
typedef const struct DECLARED_BRIDGE(NSNumber) __CFNumber* CFNumberRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef UInt32 CFStringEncoding;
typedef double CFTimeInterval;
enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };
typedef CFIndex CFNumberType;
enum : CFNumberType { kCFNumberSInt32Type = 3, kCFNumberSInt64Type = 4, kCFNumberFloat64Type = 6 };
typedef struct CFDictionaryKeyCallBacks
    CFDictionaryKeyCallBacks;  // opaque to us: only addresses are passed
typedef struct CFDictionaryValueCallBacks CFDictionaryValueCallBacks;
extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFBooleanRef kCFBooleanTrue, kCFBooleanFalse;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;
CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);  // NULL crashes: guard
CFTypeID CFGetTypeID(CFTypeRef cf);
Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2);
CFTypeID CFStringGetTypeID(void);
CFTypeID CFArrayGetTypeID(void);
CFTypeID CFBooleanGetTypeID(void);
CFTypeID CFNumberGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void* valuePtr);
CFStringRef CFStringCreateWithCString(CFAllocatorRef alloc, const char* cStr,
                                      CFStringEncoding encoding);
CFIndex CFStringGetLength(CFStringRef theString);
CFIndex CFStringGetMaximumSizeForEncoding(CFIndex length, CFStringEncoding encoding);
Boolean CFStringGetCString(CFStringRef theString, char* buffer, CFIndex bufferSize,
                           CFStringEncoding encoding);
CFIndex CFArrayGetCount(CFArrayRef theArray);
const void* CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx);
CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values,
                                   CFIndex numValues, const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks);
}
#define CFSTR(cStr) ((CFStringRef)__builtin___CFStringMakeConstantString("" cStr ""))
