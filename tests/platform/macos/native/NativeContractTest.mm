// Tests the adapters on a real Mac, except those that need the user's permission.

#import <Foundation/Foundation.h>

#include <cstdlib>
#include <memory>
#include <thread>

#import "platform/macos/FormatterLocale.h"
#import "platform/macos/OSUnifiedLog.h"
#import "platform/macos/RunLoopMainLoop.h"
#import "platform/macos/TaskChildProcessFactory.h"
#include "tests/contract/ChildProcessContract.h"
#include "tests/contract/MainLoopContract.h"
#import "tests/platform/macos/native/NativeScope.h"

namespace hushbox {
namespace {

class NativeChildProcessDriver final : public ChildProcessDriver {
 public:
  ChildProcessFactory& factory() override { return factory_; }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return runUntil(condition, limit);
  }

 private:
  TaskChildProcessFactory factory_;
};

class NativeMainLoopDriver final : public MainLoopDriver {
 public:
  MainLoop& loop() override { return loop_; }
  void keepBusy(TimeInterval span) override { std::this_thread::sleep_for(span); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return runUntil(condition, limit);
  }

  /// Terminating the application exits the process with status 0, whatever failed before. So this
  /// runs in a separate process, which checks on exit and then returns another status.
  void runToTheEnd(const std::function<void()>& start,
                   const std::function<void()>& check) override {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
          static const auto* const checkAtExit = &check;
          std::atexit([] {
            (*checkAtExit)();
            std::_Exit(testing::Test::HasFailure() ? 1 : checked);
          });
          start();
          loop_.run();
          std::_Exit(2);
        },
        testing::ExitedWithCode(checked), "");
  }

 private:
  /// A status that the process does not return by accident.
  static constexpr int checked = 42;

  RunLoopMainLoop loop_;
};

INSTANTIATE_TEST_SUITE_P(Native, ChildProcessContract, driverFactory<ChildProcessDriver>([] {
                           return std::make_unique<NativeChildProcessDriver>();
                         }));
INSTANTIATE_TEST_SUITE_P(Native, MainLoopContract, driverFactory<MainLoopDriver>([] {
                           return std::make_unique<NativeMainLoopDriver>();
                         }));

TEST(NativeLocale, TimeHasTheDigitsOfAnHourAndAMinute) {
  const std::string time = FormatterLocale().shortTime();
  EXPECT_GE(time.size(), 4U);
  EXPECT_LE(time.size(), 64U);
}

TEST(NativeLog, TakesEveryLevelAndTextThatIsNoFormat) {
  OSUnifiedLog log;
  log.write("org.hushbox.Hushbox.tests", "tests", LogLevel::info, "100 %s %n");
  log.write("org.hushbox.Hushbox.tests", "tests", LogLevel::error, "");
}

}  // namespace
}  // namespace hushbox
