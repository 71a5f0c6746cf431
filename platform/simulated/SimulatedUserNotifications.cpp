#include "platform/simulated/SimulatedUserNotifications.h"

#include <utility>

namespace hushbox {

void SimulatedUserNotifications::setAuthorization(bool granted, std::optional<std::string> error) {
  granted_ = granted;
  authorizationError_ = std::move(error);
}

void SimulatedUserNotifications::setAnswers(Answers when, TimeInterval delay) {
  when_ = when;
  delay_ = delay;
}

void SimulatedUserNotifications::answer(std::function<void()> completion) {
  if (when_ == Answers::atOnce) {
    completion();
    return;
  }
  waiting_.push_back(std::move(completion));
  if (when_ == Answers::later) loop_.deliver(delay_, [this] { answerNext(); });
}

void SimulatedUserNotifications::answerNext() {
  if (waiting_.empty()) return;
  auto completion = std::move(waiting_.front());
  waiting_.pop_front();
  loop_.runInBackground(std::move(completion));
}

void SimulatedUserNotifications::answerWaiting() {
  for (std::size_t due = waiting_.size(); due > 0; --due) answerNext();
}

void SimulatedUserNotifications::requestAuthorization(
    unsigned options,
    std::function<void(bool granted, std::optional<std::string> error)> completion) {
  journal_.add("notifications", "request authorization ", options);
  answer([completion = std::move(completion), granted = granted_, error = authorizationError_] {
    completion(granted, error);
  });
}

void SimulatedUserNotifications::add(
    NotificationRequest request, std::function<void(std::optional<std::string> error)> completion) {
  journal_.add("notifications", "add \"", request.title, "\" \"", request.body, '"',
               request.defaultSound ? " with sound" : " without sound");
  requests_.push_back(std::move(request));
  answer([completion = std::move(completion), error = addError_] { completion(error); });
}

}  // namespace hushbox
