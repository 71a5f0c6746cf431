#include "platform/simulated/SimulatedUserNotifications.h"
#include "tests/contract/UserNotificationsContract.h"

namespace hushbox {
namespace {

class SimulatedUserNotificationsDriver final : public UserNotificationsDriver {
 public:
  explicit SimulatedUserNotificationsDriver(SimulatedUserNotifications::Answers answers) {
    notifications_.setAnswers(answers);
  }

  UserNotifications& notifications() override { return notifications_; }
  std::vector<Shown> shown() override {
    std::vector<Shown> shown;
    for (const NotificationRequest& request : notifications_.requests()) {
      shown.push_back({request.title, request.body});
    }
    return shown;
  }
  void breakService() override { notifications_.setAddError("The service is gone."); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return loop_.advanceUntil(condition, limit);
  }

 private:
  Journal journal_;
  SimulatedMainLoop loop_{journal_};
  SimulatedUserNotifications notifications_{journal_, loop_};
};

using Answers = SimulatedUserNotifications::Answers;

INSTANTIATE_TEST_SUITE_P(Simulated, UserNotificationsContract,
                         driverFactory<UserNotificationsDriver>([] {
                           return std::make_unique<SimulatedUserNotificationsDriver>(
                               Answers::later);
                         }));
INSTANTIATE_TEST_SUITE_P(SimulatedAtOnce, UserNotificationsContract,
                         driverFactory<UserNotificationsDriver>([] {
                           return std::make_unique<SimulatedUserNotificationsDriver>(
                               Answers::atOnce);
                         }));

}  // namespace
}  // namespace hushbox
