#import "platform/macos/ServiceLoginItem.h"

#import <ServiceManagement/ServiceManagement.h>

namespace hushbox {

using Status = LoginItem::Status;

static_assert(static_cast<int>(Status::notRegistered) == SMAppServiceStatusNotRegistered);
static_assert(static_cast<int>(Status::enabled) == SMAppServiceStatusEnabled);
static_assert(static_cast<int>(Status::requiresApproval) == SMAppServiceStatusRequiresApproval);
static_assert(static_cast<int>(Status::notFound) == SMAppServiceStatusNotFound);

Status ServiceLoginItem::status() {
  @autoreleasepool {
    return static_cast<Status>(SMAppService.mainAppService.status);
  }
}

bool ServiceLoginItem::registerItem() {
  @autoreleasepool {
    return [SMAppService.mainAppService registerAndReturnError:nil] || status() == Status::enabled;
  }
}

bool ServiceLoginItem::unregisterItem() {
  @autoreleasepool {
    return [SMAppService.mainAppService unregisterAndReturnError:nil] ||
           status() == Status::notRegistered;
  }
}

}  // namespace hushbox
