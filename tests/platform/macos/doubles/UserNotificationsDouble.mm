#include "tests/platform/macos/doubles/UserNotificationsDouble.h"

#import <UserNotifications/UserNotifications.h>
#import <dispatch/dispatch.h>

#include <mutex>

#include "tests/platform/macos/doubles/Calls.h"
#import "tests/platform/macos/doubles/FoundationValues.h"
#include "tests/platform/macos/runtime/LiveObjects.h"
#include "tests/platform/macos/runtime/RaisedException.h"

namespace hushbox::doubles {
namespace {

std::mutex mutex;
bool granted = true;
std::optional<std::string> authorizationError;
std::optional<std::string> addError;
unsigned askedOptions = 0;
std::vector<Notification> added;

/// Runs a completion on a thread of the service.
void answer(dispatch_block_t block) {
  dispatch_async(dispatch_get_global_queue(QOS_CLASS_UTILITY, 0), block);
}

}  // namespace

void setAuthorization(bool value, std::optional<std::string> error) {
  const std::lock_guard lock(mutex);
  granted = value;
  authorizationError = std::move(error);
}

unsigned authorizationOptions() {
  const std::lock_guard lock(mutex);
  return askedOptions;
}

void setAddError(std::optional<std::string> error) {
  const std::lock_guard lock(mutex);
  addError = std::move(error);
}

std::vector<Notification> notifications() {
  const std::lock_guard lock(mutex);
  return added;
}

void clearNotifications() {
  const std::lock_guard lock(mutex);
  added.clear();
}

void resetUserNotifications() {
  setAuthorization(true);
  setAddError(std::nullopt);
  clearNotifications();
  askedOptions = 0;
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

@implementation UNNotificationContent
- (id)copyWithZone:(struct _NSZone*)zone {
  (void)zone;
  return self;
}
@end

@implementation UNMutableNotificationContent
@synthesize title, body, sound;
@end

@implementation UNNotificationSound
+ (UNNotificationSound*)defaultSound {
  static UNNotificationSound* only = [] {
    UNNotificationSound* made = [[UNNotificationSound alloc] init];
    keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (id)copyWithZone:(struct _NSZone*)zone {
  (void)zone;
  return self;
}
@end

@interface UNNotificationRequest () {
 @public
  Notification notification;
}
@end
@implementation UNNotificationRequest
+ (instancetype)requestWithIdentifier:(NSString*)identifier
                              content:(UNNotificationContent*)content
                              trigger:(UNNotificationTrigger*)trigger {
  if (!identifier || !content) fail("a notification was requested without identifier or content");
  if (![content isKindOfClass:[UNMutableNotificationContent class]]) {
    fail("a notification was requested with immutable content");
  }
  auto* filled = static_cast<UNMutableNotificationContent*>(content);
  UNNotificationRequest* made = [[UNNotificationRequest alloc] init];
  made->notification = {text(identifier), text(filled.title), text(filled.body),
                        filled.sound != nil, trigger != nil};
  return made;
}
@end

@implementation UNUserNotificationCenter
+ (UNUserNotificationCenter*)currentNotificationCenter {
  if (!NSBundle.mainBundle.bundleIdentifier) {
    throw RaisedException(
        "NSInternalInconsistencyException: bundleProxyForCurrentProcess is nil: the program is in "
        "no bundle");
  }
  static UNUserNotificationCenter* only = [] {
    UNUserNotificationCenter* made = [[UNUserNotificationCenter alloc] init];
    keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (void)requestAuthorizationWithOptions:(UNAuthorizationOptions)options
                      completionHandler:(void (^)(BOOL granted, NSError* error))completion {
  if (!completion) fail("permission to notify was requested without a completion handler");
  count("requestAuthorizationWithOptions");
  const std::lock_guard lock(mutex);
  askedOptions = static_cast<unsigned>(options);
  const bool yes = granted;
  const auto failure = authorizationError;
  answer(^{
    completion(yes, failure ? error(*failure) : nil);
  });
}
- (void)addNotificationRequest:(UNNotificationRequest*)request
         withCompletionHandler:(void (^)(NSError* error))completion {
  if (!request) fail("nil was added as a notification");
  count("addNotificationRequest");
  const std::lock_guard lock(mutex);
  const auto failure = addError;
  if (!failure) added.push_back(request->notification);
  if (!completion) return;
  answer(^{
    completion(failure ? error(*failure) : nil);
  });
}
@end
