#import "platform/macos/UserNotificationCenter.h"

#import <Foundation/Foundation.h>
#import <UserNotifications/UserNotifications.h>

#include <utility>

#import "platform/macos/StringConversion.h"

namespace hushbox {
namespace {

static_assert(unsigned{notificationSound} == UNAuthorizationOptionSound);
static_assert(unsigned{notificationAlert} == UNAuthorizationOptionAlert);

constexpr const char* noBundle =
    "Hushbox was started outside its application bundle, and only a bundle can notify";

/// Returns nil outside a bundle.
UNUserNotificationCenter* currentCenter() {
  if (!NSBundle.mainBundle.bundleIdentifier) return nil;
  return [UNUserNotificationCenter currentNotificationCenter];
}

std::optional<std::string> description(NSError* error) {
  if (!error) return std::nullopt;
  return utf8FromString(error.localizedDescription);
}

UNNotificationRequest* nativeRequest(const NotificationRequest& request) {
  UNMutableNotificationContent* content = [[UNMutableNotificationContent alloc] init];
  content.title = stringFromUtf8(request.title);
  content.body = stringFromUtf8(request.body);
  if (request.defaultSound) content.sound = [UNNotificationSound defaultSound];
  // No trigger means immediate delivery.
  return [UNNotificationRequest requestWithIdentifier:stringFromUtf8(request.identifier)
                                              content:content
                                              trigger:nil];
}

}  // namespace

void UserNotificationCenter::requestAuthorization(
    unsigned options,
    std::function<void(bool granted, std::optional<std::string> error)> completion) {
  @autoreleasepool {
    UNUserNotificationCenter* center = currentCenter();
    if (!center) {
      if (completion) completion(false, noBundle);
      return;
    }
    [center requestAuthorizationWithOptions:options
                          completionHandler:^(BOOL granted, NSError* error) {
                            if (completion) completion(granted, description(error));
                          }];
  }
}

void UserNotificationCenter::add(NotificationRequest request,
                                 std::function<void(std::optional<std::string> error)> completion) {
  @autoreleasepool {
    UNUserNotificationCenter* center = currentCenter();
    if (!center) {
      if (completion) completion(noBundle);
      return;
    }
    [center addNotificationRequest:nativeRequest(request)
             withCompletionHandler:^(NSError* error) {
               if (completion) completion(description(error));
             }];
  }
}

}  // namespace hushbox
