#include "platform/simulated/SimulatedUserNotifications.h"

#include <gmock/gmock.h>

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Answers = SimulatedUserNotifications::Answers;

class SimulatedUserNotificationsTest : public testing::Test {
 protected:
  void ask() {
    notifications.requestAuthorization(
        notificationAlert | notificationSound,
        [this](bool granted, const std::optional<std::string>& error) {
          note(std::string(granted ? "granted " : "refused ") + error.value_or("none"));
        });
  }

  void post(const std::string& title) {
    notifications.add({"id", title, "body", true}, [this](const std::optional<std::string>& error) {
      note("added " + error.value_or("none"));
    });
  }

  void note(const std::string& what) {
    answers.push_back(what + (loop.isMainThread() ? " on main" : " off main"));
  }

  Journal journal;
  SimulatedMainLoop loop{journal};
  SimulatedUserNotifications notifications{journal, loop};
  Lines answers;
};

TEST_F(SimulatedUserNotificationsTest, CompletesInALaterTurnOnAnotherThread) {
  ask();
  post("one");
  EXPECT_THAT(answers, IsEmpty());
  loop.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("granted none off main", "added none off main"));
}

TEST_F(SimulatedUserNotificationsTest, CompletesWithTheResultScriptedAtTheTimeOfTheCall) {
  notifications.setAuthorization(false, "not allowed");
  ask();
  notifications.setAddError("no service");
  post("one");
  notifications.setAddError(std::nullopt);
  loop.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("refused not allowed off main", "added no service off main"));
}

TEST_F(SimulatedUserNotificationsTest, CompletesAfterTheDelayOrAtOnceOrOnRequest) {
  notifications.setAnswers(Answers::later, 3s);
  ask();
  loop.advance(2.9s);
  EXPECT_THAT(answers, IsEmpty());
  loop.advance(0.1s);
  EXPECT_EQ(answers.size(), 1U);
  notifications.setAnswers(Answers::atOnce);
  ask();
  EXPECT_EQ(answers.back(), "granted none on main");
  notifications.setAnswers(Answers::whenAsked);
  ask();
  loop.advance(1000s);
  EXPECT_EQ(answers.size(), 2U);
  EXPECT_EQ(notifications.waitingAnswers(), 1U);
  notifications.answerWaiting();
  notifications.answerWaiting();
  EXPECT_EQ(answers.size(), 3U);
  EXPECT_EQ(answers.back(), "granted none off main");
}

TEST_F(SimulatedUserNotificationsTest, JournalAndRequestsRecordEveryCall) {
  ask();
  post("one");
  EXPECT_THAT(journal.take("notifications"),
              ElementsAre("request authorization 6", "add \"one\" \"body\" with sound"));
  ASSERT_EQ(notifications.requests().size(), 1U);
  EXPECT_EQ(notifications.requests()[0].identifier, "id");
}

}  // namespace
}  // namespace hushbox
