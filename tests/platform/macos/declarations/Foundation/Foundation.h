// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <CoreFoundation/CoreFoundation.h>
#include <dispatch/dispatch.h>
#include <objc/NSObject.h>
#pragma clang assume_nonnull begin
#define DECLARED_ENUM(T, N) \
  enum N : T;               \
  typedef enum N N;         \
  enum __attribute__((enum_extensibility(open))) N : T
#define DECLARED_OPTIONS(T, N) \
  typedef T N;                 \
  enum __attribute__((flag_enum, enum_extensibility(open))) : N  // as CF_OPTIONS in C++
typedef double NSTimeInterval;
typedef double CGFloat;
struct CGPoint {
  CGFloat x, y;
};
struct CGSize {
  CGFloat width, height;
};
struct CGRect {
  CGPoint origin;
  CGSize size;
};
typedef struct CGPoint CGPoint;
typedef struct CGSize CGSize;
typedef struct CGRect CGRect;
typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;
static inline NSPoint NSMakePoint(CGFloat x, CGFloat y) {
  return NSPoint{x, y};
}
static inline NSSize NSMakeSize(CGFloat w, CGFloat h) {
  return NSSize{w, h};
}
static inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h) {
  return NSRect{{x, y}, {w, h}};
}
@class NSString, NSData, NSDate, NSError, NSURL, NSEnumerator;
@protocol NSCopying
- (id)copyWithZone:(nullable struct _NSZone*)zone;
@end
typedef NSString* NSRunLoopMode;
typedef NSString* NSNotificationName;
typedef NSString* NSErrorDomain;
extern "C" {
extern NSRunLoopMode const NSDefaultRunLoopMode, NSRunLoopCommonModes;
}
typedef struct {
  unsigned long state;
  id __unsafe_unretained _Nullable* _Nullable itemsPtr;
  unsigned long* _Nullable mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;
@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)len;
@end
@interface NSString : NSObject <NSCopying>
@property(readonly) NSUInteger length;
@property(nullable, readonly) const char* UTF8String;
+ (nullable instancetype)stringWithUTF8String:(const char*)nullTerminatedCString;
- (nullable instancetype)initWithBytes:(const void*)bytes
                                length:(NSUInteger)len
                              encoding:(NSUInteger)encoding;
- (nullable NSData*)dataUsingEncoding:(NSUInteger)encoding allowLossyConversion:(BOOL)lossy;
- (BOOL)isEqualToString:(NSString*)aString;
@end
enum : NSUInteger { NSUTF8StringEncoding = 4 };
@interface NSNumber : NSObject <NSCopying>
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithInt:(int)value;
+ (NSNumber*)numberWithDouble:(double)value;
@property(readonly) BOOL boolValue;
@property(readonly) int intValue;
@property(readonly) double doubleValue;
@end
@interface NSArray<ObjectType> : NSObject <NSCopying, NSFastEnumeration>
@property(readonly) NSUInteger count;
- (ObjectType)objectAtIndex:(NSUInteger)index;
- (ObjectType)objectAtIndexedSubscript:(NSUInteger)idx;
+ (instancetype)arrayWithObjects:(const ObjectType _Nonnull[_Nullable])objects
                           count:(NSUInteger)cnt;
@end
@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
- (void)addObject:(ObjectType)anObject;
@end
@interface NSDictionary<K, V> : NSObject <NSCopying>
@property(readonly) NSUInteger count;
- (nullable V)objectForKey:(K)aKey;
- (nullable V)objectForKeyedSubscript:(K)key;
+ (instancetype)dictionaryWithObjects:(const V _Nonnull[_Nullable])objects
                              forKeys:(const K _Nonnull[_Nullable])keys
                                count:(NSUInteger)cnt;
@end
@interface NSNull : NSObject <NSCopying>
+ (NSNull*)null;
@end
@interface NSData : NSObject
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes;
@end
@interface NSURL : NSObject <NSCopying>
+ (instancetype)fileURLWithPath:(NSString*)path;
@end
@interface NSError : NSObject
@property(readonly) NSInteger code;
@property(readonly, copy) NSErrorDomain domain;
@property(readonly, copy) NSString* localizedDescription;
@end
@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(nullable, readonly, copy) NSString* bundleIdentifier;
- (NSString*)localizedStringForKey:(NSString*)key
                             value:(nullable NSString*)value
                             table:(nullable NSString*)tableName;
@end
@interface NSDate : NSObject
+ (instancetype)date;
@end
DECLARED_ENUM(NSUInteger, NSDateFormatterStyle){NSDateFormatterNoStyle = 0,
                                                NSDateFormatterShortStyle = 1};
@interface NSDateFormatter : NSObject
+ (NSString*)localizedStringFromDate:(NSDate*)date
                           dateStyle:(NSDateFormatterStyle)dstyle
                           timeStyle:(NSDateFormatterStyle)tstyle DECLARED_SINCE(10.6);
@end
@interface NSFileHandle : NSObject
- (nullable NSData*)readDataToEndOfFileAndReturnError:(NSError* _Nullable* _Nullable)error
    DECLARED_SINCE(10.15);
@end
@interface NSPipe : NSObject
@property(readonly, retain) NSFileHandle* fileHandleForReading;
@property(readonly, retain) NSFileHandle* fileHandleForWriting;
+ (NSPipe*)pipe;
@end
@interface NSTask : NSObject
@property(nullable, copy) NSURL* executableURL DECLARED_SINCE(10.13);
@property(nullable, copy) NSArray<NSString*>* arguments;
@property(nullable, retain) id standardInput;
@property(nullable, retain) id standardOutput;
@property(nullable, retain) id standardError;
- (BOOL)launchAndReturnError:(NSError* _Nullable* _Nullable)error DECLARED_SINCE(10.13);
- (void)waitUntilExit;
@end
@interface NSThread : NSObject
@property(class, readonly) BOOL isMainThread;
+ (void)sleepForTimeInterval:(NSTimeInterval)ti DECLARED_SINCE(10.5);
@end
DECLARED_OPTIONS(uint64_t, NSActivityOptions){
    NSActivityIdleSystemSleepDisabled = 1ULL << 20,
    NSActivityUserInitiated = 0x00FFFFFFULL | NSActivityIdleSystemSleepDisabled,
    NSActivityUserInitiatedAllowingIdleSystemSleep = NSActivityUserInitiated &
                                                     ~NSActivityIdleSystemSleepDisabled,
    NSActivityBackground = 0x000000FFULL, NSActivityLatencyCritical = 0xFF00000000ULL};
@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options
                                  reason:(NSString*)reason DECLARED_SINCE(10.9);
- (void)endActivity:(id<NSObject>)activity DECLARED_SINCE(10.9);
@end
@interface NSTimer : NSObject
+ (NSTimer*)scheduledTimerWithTimeInterval:(NSTimeInterval)interval
                                   repeats:(BOOL)repeats
                                     block:(void (^)(NSTimer* timer))block DECLARED_SINCE(10.12);
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer* timer))block DECLARED_SINCE(10.12);
@property NSTimeInterval tolerance DECLARED_SINCE(10.9);
- (void)invalidate;
@end
@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
@end
#pragma clang assume_nonnull end
