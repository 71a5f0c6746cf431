#include "tests/platform/macos/doubles/ProcessInfoDouble.h"

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

#include <algorithm>

#import "tests/platform/macos/doubles/FoundationValues.h"
#include "tests/platform/macos/doubles/RunLoopDouble.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

/// What beginActivityWithOptions:reason: returns.
@interface ActivityDouble : NSObject {
 @public
  NSActivityOptions options;
  std::string reason;
}
@end
@implementation ActivityDouble
@end

namespace hushbox::doubles {
namespace {

constexpr std::uint64_t napInterval = 10 * NSEC_PER_SEC;

/// Not owned: an activity ends with endActivity:, not with its last reference.
std::vector<__unsafe_unretained ActivityDouble*> held;
bool isNapping = false;

}  // namespace

std::vector<HeldActivity> activities() {
  std::vector<HeldActivity> all;
  for (ActivityDouble* each : held) all.push_back({each->options, each->reason});
  return all;
}

void setNapping(bool napping) {
  isNapping = napping;
}

std::uint64_t nappedUntil(std::uint64_t due) {
  const bool awake = !isNapping || std::any_of(held.begin(), held.end(), [](ActivityDouble* each) {
    return (each->options & NSActivityLatencyCritical) == NSActivityLatencyCritical;
  });
  return awake ? due : (due + napInterval - 1) / napInterval * napInterval;
}

void resetProcessInfo() {
  held.clear();
  isNapping = false;
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

@implementation NSProcessInfo
+ (NSProcessInfo*)processInfo {
  static NSProcessInfo* only = [] {
    NSProcessInfo* made = [[NSProcessInfo alloc] init];
    keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (id<NSObject>)beginActivityWithOptions:(NSActivityOptions)options reason:(NSString*)reason {
  requireMainThread("-[NSProcessInfo beginActivityWithOptions:reason:]");
  if (!reason.length) fail("an activity was begun without a reason");
  ActivityDouble* begun = [[ActivityDouble alloc] init];
  begun->options = options;
  begun->reason = text(reason);
  held.push_back(begun);
  return begun;
}
- (void)endActivity:(id<NSObject>)activity {
  requireMainThread("-[NSProcessInfo endActivity:]");
  if (std::erase(held, activity) == 0) fail("an activity was ended that is not under way");
}
@end
