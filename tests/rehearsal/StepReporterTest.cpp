#include "rehearsal/StepReporter.h"

#include <gtest/gtest.h>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {
namespace {

TEST(StepReporterTest, PrintsEachStepWithItsResultAndCountsIt) {
  testing::internal::CaptureStdout();
  StepReporter reporter;
  reporter.run("Plug it in", [] { return "it is there"; });
  reporter.run("Press it", [] { return "it clicked"; });
  reporter.printSummary();
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            " 1. Plug it in\n    it is there\n"
            " 2. Press it\n    it clicked\n"
            "2 steps passed, 0 failed.\n");
  EXPECT_EQ(reporter.failed(), 0);
}

TEST(StepReporterTest, SkipsEveryStepAfterAFailedOne) {
  testing::internal::CaptureStdout();
  StepReporter reporter;
  bool ran = false;
  reporter.run("Plug it in", []() -> std::string { throw DeskError("no socket"); });
  reporter.run("Press it", [&] {
    ran = true;
    return "it clicked";
  });
  reporter.printSummary();
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            " 1. Plug it in\n    FAILED: no socket\n"
            " 2. Press it\n    skipped\n"
            "0 steps passed, 1 failed, 1 skipped.\n");
  EXPECT_EQ(reporter.failed(), 1);
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace hushbox::rehearsal
