#include "platform/linux/session/DesktopNotifications.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/mainloop/GLibMainLoop.h"
#include "rehearsal/NotificationDaemon.h"
#include "rehearsal/NotificationMonitor.h"
#include "rehearsal/Session.h"
#include "rehearsal/SilentNotificationDaemon.h"
#include "rehearsal/Waiting.h"
#include "support/Text.h"
#include "tests/platform/linux/fixtures/NotificationDaemonMock.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using rehearsal::letPass;
using rehearsal::Session;
using rehearsal::waitUntil;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* identifier = "9F3B1C52-0D4E-4A7B-8C61-5E2F7A90D3B4";

class DesktopNotificationsTest : public testing::Test {
 protected:
  struct Answer {
    int calls = 0;
    bool granted = false;
    std::optional<std::string> error;
  };

  DesktopNotificationsTest() { session_.applyToThisProcess(); }

  std::shared_ptr<Answer> ask() {
    auto answer = std::make_shared<Answer>();
    notifications_->requestAuthorization(notificationAlert | notificationSound,
                                         [answer](bool granted, std::optional<std::string> error) {
                                           *answer = {answer->calls + 1, granted, std::move(error)};
                                         });
    return answer;
  }

  std::shared_ptr<Answer> post(const std::string& title, const std::string& body,
                               bool defaultSound = true) {
    auto answer = std::make_shared<Answer>();
    notifications_->add({identifier, title, body, defaultSound},
                        [answer](std::optional<std::string> error) {
                          *answer = {answer->calls + 1, false, std::move(error)};
                        });
    return answer;
  }

  static void wait(const std::shared_ptr<Answer>& answer) {
    waitUntil([&] { return answer->calls > 0; }, rehearsal::serverTimeout, "the completion");
    EXPECT_EQ(answer->calls, 1);
  }

  Session session_;
  GLibMainLoop loop_;
  SessionBusConnection bus_;
  std::unique_ptr<DesktopNotifications> notifications_ =
      std::make_unique<DesktopNotifications>(loop_, bus_);
};

TEST_F(DesktopNotificationsTest, BodyIsEscapedForADaemonWithMarkup) {
  const NotificationDaemonMock daemon(session_, "body body-markup");
  const rehearsal::NotificationMonitor monitor(session_.busAddress());
  const auto answer = post("Jabra <low> & dry", "Your <b>Speak2</b> & \"co\"\nis under 30%.");
  wait(answer);
  EXPECT_EQ(answer->error, std::nullopt);
  const auto shown = monitor.waitForShown(1).at(0);
  EXPECT_EQ(shown.application, "Hushbox");
  EXPECT_EQ(shown.icon, "org.hushbox.Hushbox");
  EXPECT_EQ(shown.title, "Jabra <low> & dry");
  EXPECT_EQ(shown.body, "Your &lt;b&gt;Speak2&lt;/b&gt; &amp; &quot;co&quot;\nis under 30%.");
  EXPECT_EQ(shown.soundName, "message-new-instant");
  EXPECT_EQ(shown.replaces, 0U);
  EXPECT_THAT(shown.actions, testing::IsEmpty());
}

TEST_F(DesktopNotificationsTest, BodyIsUnchangedForADaemonWithoutMarkup) {
  const NotificationDaemonMock daemon(session_, "body");
  const rehearsal::NotificationMonitor monitor(session_.busAddress());
  wait(post("Title", "<b> & more", false));
  const auto shown = monitor.waitForShown(1).at(0);
  EXPECT_EQ(shown.body, "<b> & more");
  EXPECT_EQ(shown.soundName, "");
}

TEST_F(DesktopNotificationsTest, ControlCharactersAndInvalidTextAreEscaped) {
  const NotificationDaemonMock daemon(session_, "body");
  const rehearsal::NotificationMonitor monitor(session_.busAddress());
  wait(post("a\0b\nc\xFF"s, "one\ntwo\0\x1B[31m\xC3\x28"s));
  const auto shown = monitor.waitForShown(1).at(0);
  EXPECT_EQ(shown.title, "a\\x00b\\nc\uFFFD");
  EXPECT_EQ(shown.body, "one\ntwo\\x00\\x1B[31m\uFFFD(");
}

TEST_F(DesktopNotificationsTest, RealDaemonShowsEachNotificationSeparately) {
  const Session session({.display = true});
  const_cast<Session&>(session).applyToThisProcess();
  const rehearsal::NotificationDaemon daemon(session);
  const rehearsal::NotificationMonitor monitor(session.busAddress());
  SessionBusConnection bus;
  notifications_ = std::make_unique<DesktopNotifications>(loop_, bus);
  const auto permission = ask();
  wait(permission);
  EXPECT_TRUE(permission->granted);
  wait(post("Low", "Plug it in."));
  wait(post("Low", "Plug it in."));
  const auto shown = monitor.waitForShown(2);
  EXPECT_NE(shown.at(0).id, shown.at(1).id);
  notifications_.reset();
}

TEST_F(DesktopNotificationsTest, ReportsAnErrorInPlainWordsWithoutADaemon) {
  const auto permission = ask();
  wait(permission);
  EXPECT_FALSE(permission->granted);
  const auto posted = post("Low", "Plug it in.");
  wait(posted);
  for (const auto& answer : {permission, posted}) {
    ASSERT_TRUE(answer->error);
    EXPECT_THAT(*answer->error,
                AllOf(HasSubstr("org.freedesktop.Notifications"), Not(HasSubstr("GDBus"))));
  }
}

TEST_F(DesktopNotificationsTest, FindsADaemonThatStartsLater) {
  wait(ask());
  const NotificationDaemonMock daemon(session_, "body");
  const auto answer = ask();
  wait(answer);
  EXPECT_TRUE(answer->granted);
}

TEST_F(DesktopNotificationsTest, DaemonThatDoesNotReplyBlocksNothing) {
  auto daemon = std::make_unique<rehearsal::SilentNotificationDaemon>(session_.busAddress());
  const auto start = std::chrono::steady_clock::now();
  const auto answer = post("Low", "Plug it in.");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
  waitUntil([&] { return daemon->calls() > 0; }, rehearsal::serverTimeout, "the call");
  EXPECT_EQ(answer->calls, 0);
  daemon.reset();
  wait(answer);
  EXPECT_TRUE(answer->error);
}

TEST_F(DesktopNotificationsTest, DaemonThatDoesNotReplyTimesOut) {
  const rehearsal::SilentNotificationDaemon daemon(session_.busAddress());
  const auto start = std::chrono::steady_clock::now();
  const auto answer = ask();
  wait(answer);
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_GE(waited, DesktopNotifications::callTimeout - 500ms);
  EXPECT_LT(waited, DesktopNotifications::callTimeout + 10s);
  EXPECT_FALSE(answer->granted);
  EXPECT_TRUE(answer->error);
}

TEST_F(DesktopNotificationsTest, DestructorDropsCompletionsOfPendingCalls) {
  const rehearsal::SilentNotificationDaemon daemon(session_.busAddress());
  const auto called = post("Low", "Plug it in.");
  waitUntil([&] { return daemon.calls() > 0; }, rehearsal::serverTimeout, "the call");
  const auto posted = post("Low", "Plug it in.");
  notifications_.reset();
  letPass(200ms);
  EXPECT_EQ(called->calls + posted->calls, 0);
  EXPECT_EQ(posted.use_count(), 1);
}

TEST_F(DesktopNotificationsTest, DestructorDropsCompletionsWhileConnecting) {
  const auto answer = ask();
  loop_.mainAsync([this] { notifications_.reset(); });
  letPass(200ms);
  EXPECT_EQ(answer->calls, 0);
  EXPECT_EQ(answer.use_count(), 1);
}

TEST_F(DesktopNotificationsTest, ReportsAnErrorWithoutASessionBus) {
  session_.bus().stop();
  for (int i = 0; i < 3; ++i) {
    const auto answer = ask();
    wait(answer);
    EXPECT_FALSE(answer->granted);
    EXPECT_TRUE(answer->error);
  }
}

TEST_F(DesktopNotificationsTest, ReportsAnErrorWhenTheBusExits) {
  auto daemon = std::make_unique<rehearsal::SilentNotificationDaemon>(session_.busAddress());
  const auto first = ask();
  waitUntil([&] { return daemon->calls() > 0; }, rehearsal::serverTimeout, "the call");
  session_.bus().kill();
  wait(first);
  EXPECT_TRUE(first->error);
  const auto later = post("Low", "Plug it in.");
  wait(later);
  EXPECT_TRUE(later->error);
}

TEST_F(DesktopNotificationsTest, CallableOnAnyThreadAndCompletesOnTheMainThread) {
  const NotificationDaemonMock daemon(session_, "body body-markup");
  std::atomic<int> completions = 0;
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int j = 0; j < 10; ++j) {
        notifications_->add({identifier, "Low", "Plug it in.", true},
                            [&](const std::optional<std::string>& error) {
                              EXPECT_TRUE(loop_.isMainThread());
                              EXPECT_EQ(error, std::nullopt);
                              ++completions;
                            });
      }
    });
  }
  waitUntil([&] { return completions == 40; }, rehearsal::serverTimeout, "all completions");
}

TEST_F(DesktopNotificationsTest, CompletionsAreOptional) {
  const NotificationDaemonMock daemon(session_, "body");
  const rehearsal::NotificationMonitor monitor(session_.busAddress());
  notifications_->requestAuthorization(0, nullptr);
  notifications_->add({identifier, "Low", "Plug it in.", true}, nullptr);
  EXPECT_EQ(monitor.waitForShown(1).size(), 1U);
}

}  // namespace
}  // namespace hushbox
