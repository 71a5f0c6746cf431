#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tests/contract/Contract.h"
#include "tests/contract/UserNotificationsDriver.h"

namespace hushbox {

/// What every UserNotifications does.
class UserNotificationsContract : public Contract<UserNotificationsDriver> {
 protected:
  using Shown = UserNotificationsDriver::Shown;

  /// What a completion was called with, on any thread.
  struct Answer {
    std::atomic<int> calls = 0;
    std::mutex guard;
    std::optional<std::string> error;
  };

  std::shared_ptr<Answer> post(const std::string& identifier, const std::string& title,
                               const std::string& body) {
    auto answer = std::make_shared<Answer>();
    driver().notifications().add({identifier, title, body, true},
                                 [answer](std::optional<std::string> error) {
                                   const std::lock_guard lock(answer->guard);
                                   answer->error = std::move(error);
                                   ++answer->calls;
                                 });
    return answer;
  }

  std::optional<std::string> waitForError(const std::shared_ptr<Answer>& answer) {
    EXPECT_TRUE(driver().waitFor([&] { return answer->calls > 0; }));
    const std::lock_guard lock(answer->guard);
    return answer->error;
  }
};

TEST_P(UserNotificationsContract, PermissionRequestCompletesOnce) {
  const auto calls = std::make_shared<std::atomic<int>>(0);
  const auto granted = std::make_shared<std::atomic<bool>>(false);
  driver().notifications().requestAuthorization(
      notificationAlert | notificationSound,
      [calls, granted](bool answer, const std::optional<std::string>& error) {
        EXPECT_EQ(error, std::nullopt);
        *granted = answer;
        ++*calls;
      });
  EXPECT_TRUE(driver().waitFor([&] { return *calls > 0; }));
  driver().letPass(TimeInterval(0.2));
  EXPECT_EQ(*calls, 1);
  EXPECT_TRUE(*granted);
}

TEST_P(UserNotificationsContract, NotificationIsShownWithItsTitleAndBody) {
  const auto answer = post("11111111-1111-4111-8111-111111111111", "Jabra battery low: 29%",
                           "Your Speak2 75 is under 30%.");
  EXPECT_EQ(waitForError(answer), std::nullopt);
  const std::vector<Shown> expected = {{"Jabra battery low: 29%", "Your Speak2 75 is under 30%."}};
  EXPECT_TRUE(driver().waitFor([&] { return !driver().shown().empty(); }));
  EXPECT_EQ(driver().shown(), expected);
  driver().letPass(TimeInterval(0.2));
  EXPECT_EQ(answer->calls, 1);
}

TEST_P(UserNotificationsContract, EqualTextsWithTwoIdentifiersAreTwoNotifications) {
  const auto first = post("11111111-1111-4111-8111-111111111111", "Low", "Plug it in.");
  const auto second = post("22222222-2222-4222-8222-222222222222", "Low", "Plug it in.");
  EXPECT_EQ(waitForError(first), std::nullopt);
  EXPECT_EQ(waitForError(second), std::nullopt);
  const Shown one = {"Low", "Plug it in."};
  EXPECT_TRUE(driver().waitFor([&] { return driver().shown().size() >= 2; }));
  EXPECT_EQ(driver().shown(), (std::vector{one, one}));
}

TEST_P(UserNotificationsContract, EmptyTextsArePassedOn) {
  EXPECT_EQ(waitForError(post("11111111-1111-4111-8111-111111111111", "", "")), std::nullopt);
  EXPECT_TRUE(driver().waitFor([&] { return !driver().shown().empty(); }));
  EXPECT_EQ(driver().shown(), (std::vector{Shown{"", ""}}));
}

TEST_P(UserNotificationsContract, FailureHasADescription) {
  driver().breakService();
  const auto error = waitForError(post("11111111-1111-4111-8111-111111111111", "Low", "Body"));
  ASSERT_NE(error, std::nullopt);
  EXPECT_NE(*error, "");
}

}  // namespace hushbox
