#pragma once

#include "tests/contract/Contract.h"
#include "tests/contract/LoginItemDriver.h"

namespace hushbox {

/// What every LoginItem does.
class LoginItemContract : public Contract<LoginItemDriver> {
 protected:
  LoginItem& item() { return driver().loginItem(); }
};

TEST_P(LoginItemContract, RegistrationIsEnabledUntilUnregistered) {
  EXPECT_NE(item().status(), LoginItem::Status::enabled);
  EXPECT_TRUE(item().registerItem());
  EXPECT_EQ(item().status(), LoginItem::Status::enabled);
  EXPECT_TRUE(item().unregisterItem());
  EXPECT_EQ(item().status(), LoginItem::Status::notRegistered);
}

TEST_P(LoginItemContract, RegisteringTwiceSucceeds) {
  EXPECT_TRUE(item().registerItem());
  EXPECT_TRUE(item().registerItem());
  EXPECT_EQ(item().status(), LoginItem::Status::enabled);
}

TEST_P(LoginItemContract, RefusedRegistrationIsReportedAndChangesNothing) {
  driver().refuseChanges();
  EXPECT_FALSE(item().registerItem());
  EXPECT_NE(item().status(), LoginItem::Status::enabled);
}

TEST_P(LoginItemContract, RefusedUnregistrationIsReportedAndChangesNothing) {
  ASSERT_TRUE(item().registerItem());
  driver().refuseChanges();
  EXPECT_FALSE(item().unregisterItem());
  EXPECT_EQ(item().status(), LoginItem::Status::enabled);
}

}  // namespace hushbox
