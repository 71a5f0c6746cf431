#include "platform/macos/ServiceLoginItem.h"

#include <gmock/gmock.h>

#include "tests/contract/LoginItemContract.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/MacScope.h"

namespace hushbox {
namespace {

using Status = LoginItem::Status;

class ServiceLoginItemTest : public MacFixture {
 protected:
  ServiceLoginItem item;
};

TEST_F(ServiceLoginItemTest, ReadsTheStatusEachTime) {
  for (const Status status :
       {Status::notFound, Status::notRegistered, Status::requiresApproval, Status::enabled}) {
    doubles::setServiceStatus(static_cast<int>(status));
    EXPECT_EQ(item.status(), status);
  }
}

TEST_F(ServiceLoginItemTest, ChangeToTheCurrentStatusSucceeds) {
  doubles::setServiceStatus(static_cast<int>(Status::enabled));
  EXPECT_TRUE(item.registerItem());
  EXPECT_TRUE(item.unregisterItem());
  EXPECT_TRUE(item.unregisterItem());
}

TEST_F(ServiceLoginItemTest, RegistrationThatRequiresApprovalCanFail) {
  doubles::setServiceStatus(static_cast<int>(Status::requiresApproval));
  doubles::refuseServiceChanges();
  EXPECT_FALSE(item.registerItem());
  EXPECT_FALSE(item.unregisterItem());
  EXPECT_EQ(item.status(), Status::requiresApproval);
}

class ServiceLoginItemDriver final : public LoginItemDriver {
 public:
  LoginItem& loginItem() override { return item_; }
  void refuseChanges() override { doubles::refuseServiceChanges(); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return doubles::runUntil(condition, limit);
  }

 private:
  MacScope mac_;
  ServiceLoginItem item_;
};

INSTANTIATE_TEST_SUITE_P(Macos, LoginItemContract, driverFactory<LoginItemDriver>([] {
                           return std::make_unique<ServiceLoginItemDriver>();
                         }));

}  // namespace
}  // namespace hushbox
