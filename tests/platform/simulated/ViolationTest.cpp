#include "platform/simulated/Violation.h"

#include <gtest/gtest.h>

namespace hushbox {
namespace {

TEST(ViolationDeathTest, AbortsWithItsMessage) {
  EXPECT_DEATH(reportViolation("This cannot be."), "simulated platform: This cannot be.");
}

}  // namespace
}  // namespace hushbox
