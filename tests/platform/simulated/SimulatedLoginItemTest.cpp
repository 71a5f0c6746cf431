#include "platform/simulated/SimulatedLoginItem.h"

#include <gmock/gmock.h>

namespace hushbox {
namespace {

TEST(SimulatedLoginItemTest, JournalRecordsCallsAndResults) {
  Journal journal;
  SimulatedMainLoop loop{journal};
  SimulatedLoginItem item{journal, loop};
  item.setStatusAfterRegistration(LoginItem::Status::requiresApproval);
  item.registerItem();
  EXPECT_EQ(item.status(), LoginItem::Status::requiresApproval);
  item.setRefusesUnregistration(true);
  item.unregisterItem();
  item.setStatus(LoginItem::Status::notFound);
  item.status();
  item.setRefusesUnregistration(false);
  item.unregisterItem();
  EXPECT_EQ(journal.take("login"), (Lines{"register -> true", "status -> 2", "unregister -> false",
                                          "status -> 3", "unregister -> true"}));
}

}  // namespace
}  // namespace hushbox
