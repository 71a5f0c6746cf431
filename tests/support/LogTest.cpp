#include "support/Log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {
namespace {

using testing::ElementsAre;

class LogTest : public testing::Test {
 protected:
  SimulatedDesk desk;
};

TEST_F(LogTest, RecordHasSubsystemCategoryAndLevel) {
  const Log log{"jabra"};
  log.info("Jabra input not present");
  log.error("gone");
  EXPECT_THAT(desk.log.records(),
              ElementsAre(LogRecord{"org.hushbox.Hushbox", "jabra", LogLevel::info,
                                    "Jabra input not present"},
                          LogRecord{"org.hushbox.Hushbox", "jabra", LogLevel::error, "gone"}));
}

TEST_F(LogTest, ArgumentsOfEveryKindAreRendered) {
  const Log log{"test"};
  const std::string text = "text";
  log.info("%{public}s %{public}s %{public}s", text, std::string_view("view"), "literal");
  log.info("%f %f", 0.5F, 0.25);
  log.info("%d %u %lld", std::int32_t{-7}, std::uint32_t{4294967295}, std::int64_t{-1});
  log.info("%{bool}d %{bool}d", true, false);
  EXPECT_THAT(desk.log.texts("test"), ElementsAre("text view literal", "0.500000 0.250000",
                                                  "-7 4294967295 -1", "true false"));
}

TEST_F(LogTest, WritesOffTheMainThread) {
  desk.loop.runInBackground([] { Log("test").info("background"); });
  EXPECT_THAT(desk.log.texts("test"), ElementsAre("background"));
}

}  // namespace
}  // namespace hushbox
