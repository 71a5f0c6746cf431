// Declarations only, written from the documented interface: what this program calls and no more.
#pragma once
#include <Foundation/Foundation.h>
#pragma clang assume_nonnull begin
DECLARED_ENUM(NSInteger, SMAppServiceStatus){
    SMAppServiceStatusNotRegistered = 0, SMAppServiceStatusEnabled = 1,
    SMAppServiceStatusRequiresApproval = 2, SMAppServiceStatusNotFound = 3};
DECLARED_SINCE(13.0) @interface SMAppService : NSObject
@property(class, readonly) SMAppService* mainAppService;  // Swift spells it .mainApp
- (BOOL)registerAndReturnError:(NSError* _Nullable* _Nullable)error;
- (BOOL)unregisterAndReturnError:(NSError* _Nullable* _Nullable)error;
@property(readonly) SMAppServiceStatus status;
@end
#pragma clang assume_nonnull end
