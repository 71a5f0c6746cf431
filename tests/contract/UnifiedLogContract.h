#pragma once

#include <string>
#include <thread>
#include <vector>

#include "support/BundleIdentifier.h"
#include "tests/contract/Contract.h"
#include "tests/contract/UnifiedLogDriver.h"

namespace hushbox {

/// What every UnifiedLog does.
class UnifiedLogContract : public Contract<UnifiedLogDriver> {
 protected:
  void write(const std::string& category, LogLevel level, const std::string& text) {
    driver().log().write(bundleIdentifier, category, level, text);
  }

  /// Waits until there are `count` records and returns all of them.
  std::vector<std::string> waitForRecords(std::size_t count) {
    EXPECT_TRUE(driver().waitFor([&] { return driver().records().size() >= count; }));
    driver().letPass(TimeInterval(0.1));
    return driver().records();
  }
};

TEST_P(UnifiedLogContract, RecordsAppearInOrderWithCategoryAndText) {
  write("jabra", LogLevel::info, "Attached to Jabra Speak2 75 (id 42)");
  write("notify", LogLevel::error, "Notification failed: no service");
  const auto records = waitForRecords(2);
  using testing::HasSubstr;
  EXPECT_THAT(
      records,
      testing::ElementsAre(
          testing::AllOf(HasSubstr("jabra"), HasSubstr("Attached to Jabra Speak2 75 (id 42)")),
          testing::AllOf(HasSubstr("notify"), HasSubstr("Notification failed: no service"))));
}

TEST_P(UnifiedLogContract, TextOutsideAsciiIsKept) {
  write("coordinator", LogLevel::info, "Mute → Teams");
  EXPECT_THAT(waitForRecords(1), testing::ElementsAre(testing::HasSubstr("Mute → Teams")));
}

TEST_P(UnifiedLogContract, TextOfSeveralLinesIsOneRecord) {
  write("teams-ui", LogLevel::info, "one\ntwo\r\nthree");
  const auto records = waitForRecords(1);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_THAT(records[0], testing::AllOf(testing::HasSubstr("one"), testing::HasSubstr("three")));
}

TEST_P(UnifiedLogContract, EmptyTextIsARecord) {
  write("jabra", LogLevel::info, "");
  EXPECT_EQ(waitForRecords(1).size(), 1U);
}

TEST_P(UnifiedLogContract, LongTextIsComplete) {
  const std::string text = "begin " + std::string(5000, 'x') + " end";
  write("jabra", LogLevel::info, text);
  EXPECT_THAT(waitForRecords(1), testing::ElementsAre(testing::HasSubstr(text)));
}

TEST_P(UnifiedLogContract, RecordsOfAnotherThreadAreComplete) {
  std::thread([&] { write("notify", LogLevel::info, "granted=true error=none"); }).join();
  EXPECT_THAT(waitForRecords(1),
              testing::ElementsAre(testing::HasSubstr("granted=true error=none")));
}

}  // namespace hushbox
