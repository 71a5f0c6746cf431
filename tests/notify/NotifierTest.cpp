#include "notify/Notifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "platform/simulated/SimulatedDesk.h"

namespace hushbox {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using Answers = SimulatedUserNotifications::Answers;

class NotifierTest : public testing::Test {
 protected:
  static LogRecord record(LogLevel level, const std::string& text) {
    return {"org.hushbox.Hushbox", "notify", level, text};
  }

  SimulatedDesk desk;
};

TEST_F(NotifierTest, RequestsAlertAndSoundOnly) {
  Notifier::requestAuthorization();
  EXPECT_THAT(desk.journal.take(), ElementsAre("notifications: request authorization 6"));
}

TEST_F(NotifierTest, AnswerIsOnlyLogged) {
  Notifier::requestAuthorization();
  EXPECT_THAT(desk.log.records(), IsEmpty());
  desk.journal.take();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("log: notify info: Notification permission granted=true error=none"));
  EXPECT_THAT(
      desk.log.records(),
      ElementsAre(record(LogLevel::info, "Notification permission granted=true error=none")));
}

TEST_F(NotifierTest, RefusalIsLoggedWithAndWithoutAnError) {
  desk.notifications.setAuthorization(false);
  Notifier::requestAuthorization();
  desk.loop.runUntilIdle();
  desk.notifications.setAuthorization(false, "Notifications are not allowed for this application");
  Notifier::requestAuthorization();
  desk.loop.runUntilIdle();
  desk.notifications.setAuthorization(true, "");
  Notifier::requestAuthorization();
  desk.loop.runUntilIdle();
  EXPECT_THAT(
      desk.log.records(),
      ElementsAre(record(LogLevel::info, "Notification permission granted=false error=none"),
                  record(LogLevel::info,
                         "Notification permission granted=false error=Notifications are not "
                         "allowed for this application"),
                  record(LogLevel::info, "Notification permission granted=true error=")));
}

TEST_F(NotifierTest, PostsTitleAndBodyWithTheDefaultSound) {
  Notifier::post("Jabra battery low: 29%", "Plug it in.");
  EXPECT_THAT(desk.journal.take(),
              ElementsAre("notifications: add \"Jabra battery low: 29%\" \"Plug it in.\" with "
                          "sound"));
}

TEST_F(NotifierTest, DeliveryLeavesNoRecord) {
  Notifier::post("title", "body");
  desk.journal.take();
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.journal.take(), IsEmpty());
}

TEST_F(NotifierTest, FailureIsLoggedAsAnErrorAndNotRetried) {
  desk.notifications.setAddError("The daemon is away");
  Notifier::post("title", "body");
  desk.advance(std::chrono::hours{1});
  EXPECT_THAT(desk.log.records(),
              ElementsAre(record(LogLevel::error, "Notification failed: The daemon is away")));
  EXPECT_EQ(desk.notifications.requests().size(), 1U);
}

TEST_F(NotifierTest, ErrorWithAnEmptyDescriptionIsLogged) {
  desk.notifications.setAddError("");
  Notifier::post("title", "body");
  desk.loop.runUntilIdle();
  EXPECT_THAT(desk.log.records(), ElementsAre(record(LogLevel::error, "Notification failed: ")));
}

TEST_F(NotifierTest, IdentifierIsARandomUuid) {
  std::set<std::string> identifiers;
  for (int i = 0; i < 200; ++i) Notifier::post("title", "body");
  std::set<char> digits;
  for (const NotificationRequest& request : desk.notifications.requests()) {
    const std::string& identifier = request.identifier;
    EXPECT_THAT(identifier, MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-"
                                         "[0-9A-F]{12}"));
    EXPECT_EQ(identifier.size(), 36U);
    identifiers.insert(identifier);
    digits.insert(identifier.front());
  }
  EXPECT_EQ(identifiers.size(), 200U);
  EXPECT_EQ(digits.size(), 16U);
}

TEST_F(NotifierTest, EqualTextsAreSeparateNotifications) {
  Notifier::post("title", "body");
  Notifier::post("title", "body");
  const auto& requests = desk.notifications.requests();
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_NE(requests[0].identifier, requests[1].identifier);
}

TEST_F(NotifierTest, EmptyTextsArePassedOn) {
  Notifier::post("", "");
  EXPECT_THAT(desk.journal.take(), ElementsAre("notifications: add \"\" \"\" with sound"));
}

TEST_F(NotifierTest, PostsBeforeTheAnswerAndAfterARefusal) {
  desk.notifications.setAuthorization(false);
  desk.notifications.setAnswers(Answers::whenAsked);
  Notifier::requestAuthorization();
  Notifier::post("before", "the answer");
  desk.notifications.answerWaiting();
  Notifier::post("after", "the refusal");
  desk.notifications.answerWaiting();
  EXPECT_EQ(desk.notifications.requests().size(), 2U);
  EXPECT_THAT(desk.log.texts("notify"),
              ElementsAre("Notification permission granted=false error=none"));
}

TEST_F(NotifierTest, CompletionsMayRunDuringTheCall) {
  desk.notifications.setAnswers(Answers::atOnce);
  desk.notifications.setAddError("no");
  Notifier::requestAuthorization();
  Notifier::post("title", "body");
  EXPECT_THAT(
      desk.log.texts("notify"),
      ElementsAre("Notification permission granted=true error=none", "Notification failed: no"));
}

TEST_F(NotifierTest, MayBeUsedOffTheMainThread) {
  desk.loop.runInBackground([] {
    Notifier::requestAuthorization();
    Notifier::post("title", "body");
  });
  EXPECT_EQ(desk.notifications.requests().size(), 1U);
}

}  // namespace
}  // namespace hushbox
