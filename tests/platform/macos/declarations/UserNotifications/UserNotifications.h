// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <Foundation/Foundation.h>
#pragma clang assume_nonnull begin
DECLARED_OPTIONS(NSUInteger, UNAuthorizationOptions){UNAuthorizationOptionBadge = 1 << 0,
                                                     UNAuthorizationOptionSound = 1 << 1,
                                                     UNAuthorizationOptionAlert = 1 << 2};
@class UNNotificationTrigger;
DECLARED_SINCE(10.14) @interface UNNotificationContent : NSObject<NSCopying>
@end
DECLARED_SINCE(10.14) @interface UNNotificationSound : NSObject<NSCopying>
+ (UNNotificationSound*)defaultSound;
@end
DECLARED_SINCE(10.14) @interface UNMutableNotificationContent : UNNotificationContent
@property(copy) NSString* title;
@property(copy) NSString* body;
@property(nullable, copy) UNNotificationSound* sound;
@end
DECLARED_SINCE(10.14) @interface UNNotificationRequest : NSObject
+ (instancetype)requestWithIdentifier:(NSString*)identifier
                              content:(UNNotificationContent*)content
                              trigger:(nullable UNNotificationTrigger*)trigger;
@end
DECLARED_SINCE(10.14) @interface UNUserNotificationCenter : NSObject
+ (UNUserNotificationCenter*)currentNotificationCenter;
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options
                      completionHandler:
                          (void (^)(BOOL granted, NSError* _Nullable error))completionHandler;
- (void)addNotificationRequest:(UNNotificationRequest*)request
         withCompletionHandler:(nullable void (^)(NSError* _Nullable error))completionHandler;
@end
#pragma clang assume_nonnull end
