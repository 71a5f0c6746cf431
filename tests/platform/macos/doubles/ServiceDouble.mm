#include "tests/platform/macos/doubles/ServiceDouble.h"

#import <ServiceManagement/ServiceManagement.h>

#import "tests/platform/macos/doubles/FoundationValues.h"
#include "tests/platform/macos/runtime/LiveObjects.h"

namespace hushbox::doubles {
namespace {

constexpr int fresh = SMAppServiceStatusNotFound;
int current = fresh;
bool refusing = false;

}  // namespace

void setServiceStatus(int status) {
  current = status;
}

int serviceStatus() {
  return current;
}

void refuseServiceChanges() {
  refusing = true;
}

void resetService() {
  current = fresh;
  refusing = false;
}

}  // namespace hushbox::doubles

using namespace hushbox::doubles;

namespace {

/// The framework fails if the service has the requested status already.
BOOL change(SMAppServiceStatus wanted, NSError** failure) {
  if (!refusing && current != wanted) {
    current = static_cast<int>(wanted);
    return YES;
  }
  if (failure) *failure = error("Operation not permitted");
  return NO;
}

}  // namespace

@implementation SMAppService
+ (SMAppService*)mainAppService {
  static SMAppService* only = [] {
    SMAppService* made = [[SMAppService alloc] init];
    keepForever((__bridge void*)made);
    return made;
  }();
  return only;
}
- (SMAppServiceStatus)status {
  return static_cast<SMAppServiceStatus>(current);
}
- (BOOL)registerAndReturnError:(NSError**)failure {
  return change(SMAppServiceStatusEnabled, failure);
}
- (BOOL)unregisterAndReturnError:(NSError**)failure {
  return change(SMAppServiceStatusNotRegistered, failure);
}
@end
