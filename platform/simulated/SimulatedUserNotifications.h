#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/UserNotifications.h"
#include "platform/simulated/Journal.h"
#include "platform/simulated/SimulatedMainLoop.h"

namespace hushbox {

/// A scripted notification service that shows nothing.
///
/// Journal lines: "request authorization 6", "add \"title\" \"body\" with sound".
class SimulatedUserNotifications final : public UserNotifications {
 public:
  /// When completions are called: `later` in a later turn and on another thread, `atOnce` during
  /// the call, `whenAsked` not before `answerWaiting()`.
  enum class Answers { later, atOnce, whenAsked };

  SimulatedUserNotifications(Journal& journal, SimulatedMainLoop& loop)
      : journal_(journal), loop_(loop) {}

  /// The user's answer; initially permission is granted.
  void setAuthorization(bool granted, std::optional<std::string> error = std::nullopt);
  /// The error of `add`; initially none.
  void setAddError(std::optional<std::string> error) { addError_ = std::move(error); }
  void setAnswers(Answers when, TimeInterval delay = {});

  /// Calls every waiting completion now, on another thread.
  void answerWaiting();
  std::size_t waitingAnswers() const { return waiting_.size(); }

  /// Every notification that was requested, including those that failed.
  const std::vector<NotificationRequest>& requests() const { return requests_; }
  void clearRequests() { requests_ = {}; }

  void requestAuthorization(
      unsigned options,
      std::function<void(bool granted, std::optional<std::string> error)> completion) override;
  void add(NotificationRequest request,
           std::function<void(std::optional<std::string> error)> completion) override;

 private:
  void answer(std::function<void()> completion);
  void answerNext();

  Journal& journal_;
  SimulatedMainLoop& loop_;
  bool granted_ = true;
  std::optional<std::string> authorizationError_;
  std::optional<std::string> addError_;
  Answers when_ = Answers::later;
  TimeInterval delay_{};
  std::deque<std::function<void()>> waiting_;
  std::vector<NotificationRequest> requests_;
};

}  // namespace hushbox
