#include "platform/simulated/SimulatedUnifiedLog.h"

#include <gmock/gmock.h>

namespace hushbox {
namespace {

TEST(SimulatedUnifiedLogTest, KeepsRecordsAndFiltersThemByCategory) {
  Journal journal;
  SimulatedUnifiedLog log{journal};
  log.write("org.example", "jabra", LogLevel::info, "one");
  log.write("org.example", "notify", LogLevel::error, "two");
  const std::vector<LogRecord> expected = {{"org.example", "jabra", LogLevel::info, "one"},
                                           {"org.example", "notify", LogLevel::error, "two"}};
  EXPECT_TRUE(log.records() == expected);
  EXPECT_EQ(log.texts("notify"), Lines{"two"});
  EXPECT_EQ(journal.take("log"), (Lines{"jabra info: one", "notify error: two"}));
}

}  // namespace
}  // namespace hushbox
