#include "platform/macos/OSUnifiedLog.h"

#include <gmock/gmock.h>

#include "support/BundleIdentifier.h"
#include "tests/contract/UnifiedLogContract.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/MacScope.h"

namespace hushbox {
namespace {

class OSUnifiedLogTest : public MacFixture {
 protected:
  doubles::UnifiedLogRecord written(LogLevel level, std::string_view text) {
    log.write(bundleIdentifier, "jabra", level, text);
    const auto records = doubles::logRecords();
    return records.empty() ? doubles::UnifiedLogRecord{} : records.back();
  }

  OSUnifiedLog log;
};

TEST_F(OSUnifiedLogTest, RecordHasItsSubsystemAndCategory) {
  const auto record = written(LogLevel::info, "Attached to Jabra Speak2 75 (id 42)");
  EXPECT_EQ(record.subsystem, "org.hushbox.Hushbox");
  EXPECT_EQ(record.category, "jabra");
  EXPECT_EQ(record.text, "Attached to Jabra Speak2 75 (id 42)");
}

TEST_F(OSUnifiedLogTest, ReadsNoFurtherThanTheNames) {
  const std::string names = "org.hushbox.Hushboxjabra-and-more";
  log.write(std::string_view(names).substr(0, 19), std::string_view(names).substr(19, 5),
            LogLevel::info, std::string_view("one two").substr(0, 3));
  ASSERT_EQ(doubles::logRecords().size(), 1U);
  EXPECT_EQ(doubles::logRecords()[0].subsystem, "org.hushbox.Hushbox");
  EXPECT_EQ(doubles::logRecords()[0].category, "jabra");
  EXPECT_EQ(doubles::logRecords()[0].text, "one");
}

TEST_F(OSUnifiedLogTest, TranslatesTheLevels) {
  EXPECT_EQ(written(LogLevel::info, "x").type, 0x01U);
  EXPECT_EQ(written(LogLevel::error, "x").type, 0x10U);
}

TEST_F(OSUnifiedLogTest, TextIsPublicAndNotAFormat) {
  EXPECT_EQ(written(LogLevel::info, "100 %s of %n").text, "100 %s of %n");
}

TEST_F(OSUnifiedLogTest, EscapesControlCharacters) {
  EXPECT_EQ(written(LogLevel::info, std::string_view("a\0b\nc\x1b[2J", 9)).text,
            "a\\x00b\\nc\\x1B[2J");
}

class OSUnifiedLogDriver final : public UnifiedLogDriver {
 public:
  UnifiedLog& log() override { return log_; }
  std::vector<std::string> records() override {
    std::vector<std::string> records;
    for (const doubles::UnifiedLogRecord& record : doubles::logRecords())
      records.push_back(record.category + ": " + record.text);
    return records;
  }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return doubles::runUntil(condition, limit);
  }

 private:
  MacScope mac_;
  OSUnifiedLog log_;
};

INSTANTIATE_TEST_SUITE_P(Macos, UnifiedLogContract, driverFactory<UnifiedLogDriver>([] {
                           return std::make_unique<OSUnifiedLogDriver>();
                         }));

}  // namespace
}  // namespace hushbox
