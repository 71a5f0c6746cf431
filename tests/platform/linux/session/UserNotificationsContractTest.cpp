#include "tests/contract/UserNotificationsContract.h"

#include "platform/linux/mainloop/GLibMainLoop.h"
#include "platform/linux/session/DesktopNotifications.h"
#include "rehearsal/NotificationDaemon.h"
#include "rehearsal/NotificationMonitor.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

class DesktopNotificationsDriver final : public UserNotificationsDriver {
 public:
  DesktopNotificationsDriver() { session_.applyToThisProcess(); }

  UserNotifications& notifications() override { return notifications_; }
  std::vector<Shown> shown() override {
    std::vector<Shown> shown;
    for (const auto& one : monitor_.shown()) shown.push_back({one.title, one.body});
    return shown;
  }
  void breakService() override { daemon_.kill(); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  rehearsal::Session session_{{.display = true}};
  rehearsal::NotificationDaemon daemon_{session_};
  rehearsal::NotificationMonitor monitor_{session_.busAddress()};
  GLibMainLoop loop_;
  SessionBusConnection bus_;
  DesktopNotifications notifications_{loop_, bus_};
};

INSTANTIATE_TEST_SUITE_P(Linux, UserNotificationsContract,
                         driverFactory<UserNotificationsDriver>([] {
                           return std::make_unique<DesktopNotificationsDriver>();
                         }));

}  // namespace
}  // namespace hushbox
