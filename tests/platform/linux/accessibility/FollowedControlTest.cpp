#include "platform/linux/accessibility/FollowedControl.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>

#include "tests/platform/linux/fixtures/AccessibleProgramsFixture.h"

namespace hushbox {
namespace {

class FollowedControlTest : public AccessibleProgramsFixture {
 protected:
  using Clock = std::chrono::steady_clock;

  FollowedControlTest() {
    EXPECT_TRUE(connects(bus_));
    bus_.beginBudget();
    control_.follow(std::make_shared<TeamsDocument>(), {browser_->busName(), "/b"});
  }
  void read() {
    CallBatch batch;
    const auto calls = control_.addCalls(batch);
    ASSERT_TRUE(calls.has_value());
    bus_.send(batch);
    control_.read(batch, *calls);
  }
  /// Reads until that holds: on a busy machine a program may reply later than one reading waits.
  bool readsUntil(const std::function<bool()>& condition) {
    return rehearsal::holdsWithin(
        [&] {
          read();
          return condition();
        },
        rehearsal::serverTimeout);
  }

  std::unique_ptr<AccessibleProgram> browser_ = meeting();
  AtspiBus bus_;
  FollowedControl control_{bus_};
};

TEST_F(FollowedControlTest, ReturnsWhatWasReadSinceThen) {
  const auto before = Clock::now();
  EXPECT_FALSE(control_.factsSince(before).has_value());
  ASSERT_TRUE(readsUntil([&] { return control_.factsSince(before).has_value(); }));
  EXPECT_EQ(control_.factsSince(before)->name, label);
}

TEST_F(FollowedControlTest, ReturnsNulloptForWhatWasReadEarlier) {
  const auto before = Clock::now();
  ASSERT_TRUE(readsUntil([&] { return control_.factsSince(before).has_value(); }));
  EXPECT_FALSE(control_.factsSince(Clock::now()).has_value());
}

TEST_F(FollowedControlTest, ReturnsNulloptWhereSomeFactsAreMissing) {
  const auto before = Clock::now();
  browser_->setAttributesInProperties(false);
  ASSERT_TRUE(readsUntil([&] { return control_.wasThere(before); }));
  EXPECT_FALSE(control_.factsSince(before).has_value());
}

}  // namespace
}  // namespace hushbox
