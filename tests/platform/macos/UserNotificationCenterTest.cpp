#include "platform/macos/UserNotificationCenter.h"

#include <gmock/gmock.h>

#include "tests/contract/UserNotificationsContract.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/MacScope.h"

namespace hushbox {
namespace {

class UserNotificationCenterTest : public MacFixture {
 protected:
  struct Answer {
    int calls = 0;
    bool granted = false;
    std::optional<std::string> error;
  };

  void ask(unsigned options = notificationAlert | notificationSound) {
    center.requestAuthorization(options, [this](bool granted, std::optional<std::string> error) {
      const std::lock_guard lock(guard);
      answer.granted = granted;
      answer.error = std::move(error);
      ++answer.calls;
    });
  }
  void add(NotificationRequest request) {
    center.add(std::move(request), [this](std::optional<std::string> error) {
      const std::lock_guard lock(guard);
      answer.error = std::move(error);
      ++answer.calls;
    });
  }
  static NotificationRequest warning(bool sound = true) {
    return {"11111111-1111-4111-8111-111111111111", "Jabra battery low: 29%",
            "Your Speak2 75 is under 30%.", sound};
  }

  UserNotificationCenter center;
  /// Completions come on the service's threads; `settle()` waits for them.
  std::mutex guard;
  Answer answer;
};

TEST_F(UserNotificationCenterTest, RequestsExactlyTheGivenOptions) {
  ask(notificationAlert | notificationSound);
  EXPECT_EQ(doubles::authorizationOptions(), 6U);
  ask(notificationSound);
  EXPECT_EQ(doubles::authorizationOptions(), 2U);
  ask(notificationAlert);
  EXPECT_EQ(doubles::authorizationOptions(), 4U);
}

TEST_F(UserNotificationCenterTest, ReportsWhetherPermissionWasGranted) {
  ask();
  settle();
  EXPECT_EQ(answer.calls, 1);
  EXPECT_TRUE(answer.granted);
  EXPECT_EQ(answer.error, std::nullopt);
  doubles::setAuthorization(false, "Notifications are not allowed for this application");
  ask();
  settle();
  EXPECT_EQ(answer.calls, 2);
  EXPECT_FALSE(answer.granted);
  EXPECT_EQ(answer.error, "Notifications are not allowed for this application");
}

TEST_F(UserNotificationCenterTest, PermissionAndErrorAreIndependent) {
  doubles::setAuthorization(false, std::nullopt);
  ask();
  settle();
  EXPECT_FALSE(answer.granted);
  EXPECT_EQ(answer.error, std::nullopt);
  doubles::setAuthorization(true, "Provisional");
  ask();
  settle();
  EXPECT_TRUE(answer.granted);
  EXPECT_EQ(answer.error, "Provisional");
}

TEST_F(UserNotificationCenterTest, AddsTheNotificationUnchangedAndWithoutATrigger) {
  add(warning());
  settle();
  ASSERT_EQ(doubles::notifications().size(), 1U);
  const doubles::Notification shown = doubles::notifications().front();
  EXPECT_EQ(shown.identifier, "11111111-1111-4111-8111-111111111111");
  EXPECT_EQ(shown.title, "Jabra battery low: 29%");
  EXPECT_EQ(shown.body, "Your Speak2 75 is under 30%.");
  EXPECT_TRUE(shown.defaultSound);
  EXPECT_FALSE(shown.trigger);
  EXPECT_EQ(answer.calls, 1);
  EXPECT_EQ(answer.error, std::nullopt);
}

TEST_F(UserNotificationCenterTest, NotificationIsSilentUnlessASoundIsRequested) {
  add(warning(false));
  settle();
  ASSERT_EQ(doubles::notifications().size(), 1U);
  EXPECT_FALSE(doubles::notifications().front().defaultSound);
}

TEST_F(UserNotificationCenterTest, FailureIsTheErrorsLocalizedDescription) {
  doubles::setAddError("The notification could not be added");
  add(warning());
  settle();
  EXPECT_EQ(answer.calls, 1);
  EXPECT_EQ(answer.error, "The notification could not be added");
}

TEST_F(UserNotificationCenterTest, DoesNotCallTheServiceOutsideABundle) {
  doubles::setBundleIdentifier(std::nullopt);
  ask();
  EXPECT_EQ(answer.calls, 1);
  EXPECT_FALSE(answer.granted);
  EXPECT_THAT(answer.error.value_or(""), testing::HasSubstr("outside its application bundle"));
  answer = {};
  add(warning());
  EXPECT_EQ(answer.calls, 1);
  EXPECT_THAT(answer.error.value_or(""), testing::HasSubstr("outside its application bundle"));
}

TEST_F(UserNotificationCenterTest, CompletionIsOptional) {
  center.requestAuthorization(notificationAlert, nullptr);
  center.add(warning(), nullptr);
  settle();
  EXPECT_EQ(doubles::notifications().size(), 1U);
  doubles::setBundleIdentifier(std::nullopt);
  center.requestAuthorization(notificationAlert, nullptr);
  center.add(warning(), nullptr);
}

TEST_F(UserNotificationCenterTest, DestroysACompletionAfterItsReply) {
  const auto held = std::make_shared<int>();
  center.requestAuthorization(notificationAlert, [held](bool, const auto&) {});
  center.add(warning(), [held](const auto&) {});
  EXPECT_GT(held.use_count(), 1);
  settle();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(UserNotificationCenterTest, ReleasesEverythingAfterTheReplies) {
  const auto round = [this] {
    ask();
    add(warning());
    settle();
  };
  round();
  doubles::clearNotifications();
  const auto before = doubles::liveObjects();
  for (int i = 0; i < 20; ++i) {
    round();
    doubles::clearNotifications();
  }
  EXPECT_EQ(doubles::liveObjects(), before);
}

class UserNotificationCenterDriver final : public UserNotificationsDriver {
 public:
  UserNotifications& notifications() override { return center_; }
  std::vector<Shown> shown() override {
    std::vector<Shown> shown;
    for (const doubles::Notification& each : doubles::notifications())
      shown.push_back({each.title, each.body});
    return shown;
  }
  void breakService() override { doubles::setAddError("The service is gone."); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return doubles::runUntil(condition, limit);
  }

 private:
  MacScope mac_;
  UserNotificationCenter center_;
};

INSTANTIATE_TEST_SUITE_P(Macos, UserNotificationsContract,
                         driverFactory<UserNotificationsDriver>([] {
                           return std::make_unique<UserNotificationCenterDriver>();
                         }));

}  // namespace
}  // namespace hushbox
